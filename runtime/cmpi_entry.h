// What the entries of the MI tables share: the frame in which a request runs, and the tables that
// the entries of each kind make.
#ifndef TVR_RUNTIME_CMPI_ENTRY_H
#define TVR_RUNTIME_CMPI_ENTRY_H

#include "runtime/cancellation.h"
#include "runtime/cmpi_adapter.h"
#include "runtime/cmpi_thread_context.h"
#include "runtime/log.h"

#include <exception>
#include <mutex>

namespace cimple {

// The tables, without the members of later editions. `name` is borrowed for ever.
CMPIInstanceMIFT instance_table(const char* name) noexcept;
CMPIMethodMIFT method_table(const char* name) noexcept;
CMPIAssociationMIFT association_table(const char* name) noexcept;
CMPIIndicationMIFT indication_table(const char* name) noexcept;

// `ftVersion` and `miVersion` of each.
constexpr int table_version = 100;

// Where an entry stands, for its log lines.
struct Call_Site {
    const char* file;
    long line;

    static constexpr Call_Site here(const char* file = __builtin_FILE(),
                                    long line = __builtin_LINE()) noexcept {
        return {base_name(file), line};
    }
};

// What an entry answers, and what its log line says: the name of a code, mostly that of the answer,
// and a text besides.
struct Outcome {
    CMPIrc rc;
    const char* detail = nullptr;
    CMPIrc logged;

    constexpr Outcome(CMPIrc code, const char* text = nullptr) noexcept
        : rc(code), detail(text), logged(code) {}

    static constexpr Outcome logged_as(CMPIrc logged, CMPIrc code) noexcept {
        Outcome outcome(code);
        outcome.logged = logged;
        return outcome;
    }
};

// The two log lines of an entry; the second is written however the entry is left.
class Trace {
public:
    explicit Trace(const char* function, Call_Site where = Call_Site::here()) noexcept;
    ~Trace();
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    void set(const Outcome& outcome) noexcept { _outcome = outcome; }

private:
    const char* _function;
    Call_Site _where;
    Outcome _outcome{CMPI_RC_ERR_FAILED};
};

void log_exception(const char* function, const char* what) noexcept;

// Runs `body`, which answers an Outcome, and keeps exceptions from the object manager.
template <class Body>
CMPIStatus answer(const char* function, Body&& body, Call_Site where = Call_Site::here()) {
    CMPIrc rc = CMPI_RC_ERR_FAILED;
    try {
        Trace trace(function, where);
        const Outcome outcome = body();
        trace.set(outcome);
        rc = outcome.rc;
    } catch (const std::exception& error) {
        log_exception(function, error.what());
    } catch (...) {
        pass_cancellation();
        log_exception(function, "unknown");
    }
    return CMPIStatus{rc, nullptr};
}

// The frame of a request: thread context on top, the adapter's mutex held. `body` gets the adapter.
// A thread that is cancelled meanwhile ends in a wait for the mutex, in one that the body is in, or
// when the request has ended.
template <class MI, class Body>
CMPIStatus in_frame(const char* function, const MI* mi, const CMPIContext* context, Body&& body,
                    Call_Site where = Call_Site::here()) {
    CMPI_Adapter* adapter = CMPI_Adapter::of(mi);
    if (adapter == nullptr) {
        return CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
    }
    const Cancel_Later until_waiting;
    CMPI_Context_Scope scope(adapter->broker(), context);
    adapter->mutex().lock_cancellably();
    const std::lock_guard lock(adapter->mutex(), std::adopt_lock);
    return answer(
        function, [&] { return Outcome(body(*adapter)); }, where);
}

// An entry that does nothing but answer.
inline CMPIStatus reply(const char* function, CMPIrc rc,
                        Call_Site where = Call_Site::here()) noexcept {
    Trace trace(function, where);
    trace.set(rc);
    return CMPIStatus{rc, nullptr};
}

// Ends one MI, in a thread context of its own and without the mutex, which may end with the
// adapter.
template <class MI>
CMPIStatus clean_up(const char* function, const MI* mi, const CMPIContext* context,
                    CMPIBoolean terminating, Call_Site where = Call_Site::here()) {
    CMPI_Adapter* adapter = CMPI_Adapter::of(mi);
    if (adapter == nullptr) {
        return CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
    }
    const Cancel_Later until_ended;
    CMPI_Context_Scope scope(adapter->broker(), context);
    return answer(
        function, [&] { return Outcome(adapter->cleanup(terminating != 0)); }, where);
}

// The class that a path names, of any class of the module; null if there is none.
const Meta_Class* find_class(const CMPI_Adapter& adapter, const CMPIObjectPath* path);

// The instance that a path or a CMPI instance stands for, and how making it went.
struct Made {
    Ref<> instance;
    CMPIrc rc;
};

// An instance of the class with the keys that the path has.
Made make_model(const CMPI_Adapter& adapter, const Meta_Class* meta_class,
                const CMPIObjectPath* path);

// What a provider's status means to the object manager.
struct Status_Answer {
    int status;
    CMPIrc rc;
};

// The answer that the table gives; CMPI_RC_OK for a status that it doesn't name.
template <std::size_t size>
CMPIrc answer_to(const Status_Answer (&table)[size], int status) noexcept {
    for (const Status_Answer& entry : table) {
        if (entry.status == status) {
            return entry.rc;
        }
    }
    return CMPI_RC_OK;
}

} // namespace cimple

#endif
