// The books of the object manager: which objects of CMPI live, to which scope they belong, and what
// broke the rules.
//
// An object is made on a thread in the thread's innermost scope and ends by release or with the
// scope; a clone or a prepared context ends by release (or detach) alone. An ended object is
// poisoned: its content goes, its handle points to nowhere and its characters read as rubbish. It
// stays as a tombstone that knows where it ended until many others have ended after it.
#ifndef TVR_HOST_TRACKER_H
#define TVR_HOST_TRACKER_H

#include "host/object_manager.h"

#include <cmpidt.h>
#include <cmpift.h>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace tvrhost {

class Tracker;
class Scope_Frame;

enum class State : unsigned char { live, ending, released, collected };

// The first characters of a text, for the tombstone of an object.
class Short_Name {
public:
    void set(std::string_view text) noexcept {
        const std::size_t size = text.copy(_chars, sizeof _chars - 1);
        _chars[size] = '\0';
    }
    const char* get() const noexcept { return _chars; }

private:
    char _chars[32] = "";
};

// What the object manager knows of any object.
struct Tracked {
    Tracked(Tracker& owner, const char* kind_text) : tracker(owner), kind(kind_text) {}
    Tracked(const Tracked&) = delete;
    Tracked& operator=(const Tracked&) = delete;
    virtual ~Tracked() = default;
    virtual void poison() noexcept = 0; // leaves nothing of the content but its short name

    Tracker& tracker;
    const char* kind; // "CMPIString"
    std::atomic<State> state{State::live};
    bool is_clone = false;    // or a prepared context: no scope collects it
    bool is_argument = false; // context or result of a call, expression of a filter
    bool is_element = false;  // got from an array, to which it belongs

    // Of one that has ended: in which scope, by which code if by release, and what it was.
    std::shared_ptr<const std::string> ended_in;
    const void* ended_at = nullptr;
    Short_Name short_name;
};

// What a content is called in faults; empty where the kind says all.
template <class Content> std::string_view name_of(const Content&) noexcept {
    return {};
}
inline std::string_view name_of(const std::string& text) noexcept {
    return text;
}

// Where the handle of an ended object points: no address of this machine.
inline void* nowhere() noexcept {
    return reinterpret_cast<void*>(0xDDDDDDDDDDDDDDDD);
}

// A CMPI object of ours: the pair of handle and table that the module sees, and the content.
template <class Cmpi, class Content> struct Object final : Cmpi, Tracked {
    using Pair = Cmpi;
    using Value = Content;

    Object(Tracker& owner, const char* kind_text, decltype(Cmpi::ft) table, Content value)
        : Cmpi{this, table}, Tracked(owner, kind_text), content(std::move(value)) {}
    void poison() noexcept override {
        short_name.set(name_of(*content));
        if constexpr (std::is_same_v<Content, std::string>) {
            content->assign(content->size(), '\xDD'); // who reads on reads this
        } else {
            this->hdl = nowhere();
            content.reset();
        }
    }

    std::optional<Content> content;
};

// A scope on a thread: one call into the module, or the time from attach to detach.
class Scope_Frame {
public:
    // `label` tells in faults what was going on, as "enumerateInstances TVRHBA_FCPort".
    Scope_Frame(Tracker& tracker, std::string label);
    ~Scope_Frame();
    Scope_Frame(const Scope_Frame&) = delete;
    Scope_Frame& operator=(const Scope_Frame&) = delete;

    // The thread's innermost scope of that tracker, or null.
    static Scope_Frame* top(const Tracker& tracker) noexcept;

    void add(std::unique_ptr<Tracked> object) { _objects.push_back(std::move(object)); }
    const std::shared_ptr<const std::string>& label() const noexcept { return _label; }
    // Ends the objects now; for a frame whose thread was never detached and may still see it.
    void abandon() noexcept;

private:
    Tracker* _tracker; // null once abandoned
    std::shared_ptr<const std::string> _label;
    Scope_Frame* _below;
    std::vector<std::unique_ptr<Tracked>> _objects;
};

class Tracker {
public:
    explicit Tracker(std::size_t tombstones) : _tombstone_limit(tombstones) {}
    ~Tracker();
    Tracker(const Tracker&) = delete;
    Tracker& operator=(const Tracker&) = delete;

    // Takes over a new object, into the calling thread's scope or, a clone, into none.
    void adopt(std::unique_ptr<Tracked> object, bool clone);
    // A prepared context belongs to that broker as well, with which it has to end.
    void set_broker(const Tracked& context, const void* broker);
    bool has_contexts_of(const void* broker) const;

    // Ends an object by release, asked for by the code at `caller`; false, and a fault, if it had
    // ended before.
    bool release(Tracked& object, const void* caller) noexcept;
    // Ends what the object manager itself keeps beyond scopes: a prepared context with its thread,
    // an expression with its filter.
    void end_clone(Tracked& object) noexcept;
    // True if the object is alive; a fault if not.
    bool is_live(const Tracked& object, const char* operation);

    void fault(Fault_Kind kind, const std::string& text);
    // What goes on in this thread, for a fault's text: " (scope, code)", or nothing.
    std::string place() const;
    std::vector<Fault> faults() const;
    std::vector<Fault> take_faults();
    bool has_unseen_faults() const;

    // Attached threads, by context.
    CMPIStatus attach(Tracked& context);
    CMPIStatus detach(Tracked& context);

    // Reports and ends the clones and contexts that are left.
    void report_leaks();

    std::size_t live() const noexcept { return _live; }
    std::size_t live_clones() const noexcept;

private:
    friend class Scope_Frame;
    using Objects = std::vector<std::unique_ptr<Tracked>>;
    void bury(Objects objects); // ended objects become tombstones
    void collect(Objects objects, const std::shared_ptr<const std::string>& scope) noexcept;
    bool end(Tracked& object, State state, const std::shared_ptr<const std::string>& scope,
             const void* caller) noexcept;
    std::shared_ptr<const std::string> scope_label() const;

    struct Clone {
        std::unique_ptr<Tracked> object;
        std::shared_ptr<const std::string> made_in; // the scope
        const void* broker = nullptr;               // of a prepared context
    };

    mutable std::mutex _mutex; // guards all below but the counts
    std::vector<Fault> _faults;
    mutable bool _unseen = false;
    std::unordered_map<const Tracked*, Clone> _clones;
    std::unordered_map<const Tracked*, std::unique_ptr<Scope_Frame>> _attached;
    Objects _orphans; // made outside any scope
    std::deque<Objects> _tombstones;
    std::size_t _tombstone_count = 0;
    const std::size_t _tombstone_limit;
    std::atomic<std::size_t> _live{0};
};

} // namespace tvrhost

#endif
