#include "agent/diagnostic_runs.h"

#include "access/attribute_buffer.h"
#include "access/diagnostic_poll.h"
#include "access/entry_points.h"
#include "access/method_wrapper.h"
#include "agent/diagnostic_jobs.h"
#include "agent/diagnostic_records.h"
#include "common/logger.h"
#include "runtime/thread.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace cimple {

namespace {

constexpr uint16 completed_ok = 2;
constexpr uint16 completed_failed = 5;

// Statuses of wrong arguments.
constexpr uint32 bad_argument = 1;
constexpr uint32 bad_type = 4;
constexpr uint32 bad_port = 5;
constexpr uint32 no_buffer = 8;

constexpr int busy_attempts = 122;
constexpr int beacon_cycles = 20;
constexpr uint64 beacon_pause = 1'000'000; // microseconds
constexpr uint64 plug_pause = 1'000'000;

// Name of the test.
const char* name_of(const Diagnostic_Request& request) noexcept {
    return request.settings.InstanceID.value.c_str();
}

std::string success_text(const Diagnostic_Request& request) {
    return std::string(name_of(request)) + " Resulted with Success";
}
std::string failure_text(const Diagnostic_Request& request, uint32 status) {
    return std::string(name_of(request)) + " Resulted with Failure, Exited with error code " +
           std::to_string(static_cast<int>(status));
}

// Job and records of a test that was run.
struct Test_Result {
    const std::string& text;
    bool passed;
    uint32 test_id = no_test_id;
    const RM_DIAGRESULT* record = nullptr;
};

void keep_result(const Diagnostic_Request& request, const Test_Result& result,
                 Ref<TVRHBA_ConcreteJob>& job) {
    const bool deletes = request.job_settings.DeleteOnCompletion.value;
    const String& name = request.settings.InstanceID.value;
    const TVRHBA_ConcreteJob* made = CreateConcreteJobInstantiateNonBlocking(
        request.maps, name, deletes, result.passed ? JOB_COMPLETED : JOB_FAILED, result.test_id,
        request.element);
    if (made == nullptr) {
        return; // records are found by their job
    }
    Diagnostic_Counts counts{};
    if (result.record != nullptr) {
        counts = {result.record->completedCycles, result.record->timeToExecute,
                  result.record->loopsFailed};
    }
    const Diagnostic_Outcome outcome{name,
                                     String(result.text),
                                     made->InstanceID.value,
                                     result.record == nullptr ? nullptr : &counts,
                                     result.passed ? completed_ok : completed_failed,
                                     request.element,
                                     request.settings.OverridedSettingData.value};
    CreateDiagnosticServiceRecord(request.maps, outcome);
    CreateDiagnosticCompletionRecord(request.maps, outcome);
    if (deletes) {
        DeleteConcreteJob(request.maps, made);
    } else {
        job.reset(made->clone());
    }
}

// A test that was not run, or not to its end.
uint32 give_up(uint32 status, Ref<TVRHBA_ConcreteJob>& job) {
    job.reset();
    TVR_LOG("%s , Exited with error code : %d", MapDiagStatus(status), status);
    return status;
}

// ---- tests that the adapter runs

// What differs between them once they run.
struct Poll_Traits {
    bool with_status;       // the log tells that of each poll
    bool failure_fails_job; // a fault that the test finds is told in the job, too
    const char* other_end;  // behind the name, for an end that is none of the known ones
};
constexpr Poll_Traits echo_traits{false, false, "Unknown error, Exited with error code : 0"};
constexpr Poll_Traits loopback_traits{false, true, "Unknown Error, Exited with error code"};
constexpr Poll_Traits self_traits{true, false, "Unknown Error, Exited with error code"};

uint32 await_end(const Diagnostic_Request& request, uint32 test_id, const Poll_Traits& traits,
                 Ref<TVRHBA_ConcreteJob>& job) {
    const char* name = name_of(request);
    const Diagnostic_Poll poll = poll_results({request.port, name, test_id}, traits.with_status);
    if (!poll.is_over) {
        return give_up(poll.status, job);
    }
    if (poll.result.state != RM_TEST_FINISHED) {
        TVR_LOG("%s %s", name, traits.other_end);
        return give_up(RM_STATUS_OK, job);
    }
    const char* verdict = MapDiagResultStatus(poll.result.resultCode);
    const bool passed = std::strcmp(verdict, "Success") == 0;
    const std::string text =
        passed ? success_text(request)
               : std::string(name) + " Resulted with Failure, Result - " + verdict;
    TVR_LOG("%s", text.c_str());
    keep_result(request, {text, passed || !traits.failure_fails_job, test_id, &poll.result}, job);
    return RM_STATUS_OK;
}

// What a test with data sends, and how often.
struct Test_Data {
    explicit Test_Data(const TVRHBA_FCHBADiagnosticSettingData& settings)
        : halt_on_error(settings.HaltOnError.value ? 1 : 0) {
        const Array<String>& parameters = settings.LoopControlParameter.value;
        if (!parameters.empty()) {
            cycles = static_cast<uint32>(std::strtoul(parameters[0].c_str(), nullptr, 10));
        }
        const Array<uint8>& bytes = settings.BufferPattern.value;
        std::copy_n(bytes.begin(), std::min<std::size_t>(bytes.size(), RM_DIAG_PATTERN_SIZE),
                    pattern);
    }

    uint32 cycles = 0;
    uint32 halt_on_error;
    char pattern[RM_DIAG_PATTERN_SIZE + 1] = {}; // ends with a zero in any case
};

// Whether the port lets itself be tested; `status` is the answer to a test that isn't run.
bool is_enabled(const Diagnostic_Request& request, uint32& status) {
    constexpr uint32 disabled = 22;
    AttributeBuffer attributes(AttributeBuffer::capacity);
    status = rm::LRM_GetPortAttributes(request.port, attributes.data(), &attributes.size);
    if (status != RM_STATUS_OK) {
        TVR_LOG("RM_GetPortAttributes command failed. Exited with error code : %d", status);
        return false;
    }
    if (getAttributeNumber(attributes, RM_PA_LINK_STATE) == disabled) {
        TVR_LOG("Source HBA port is disabled. Unable to start %s ", name_of(request));
        status = attributes.find(RM_PA_LINK_STATE).status;
        return false;
    }
    return true;
}

// Whether a plug leads what the port sends back to it. A port whose attributes can't be read is
// taken to have one.
bool has_loopback_plug(const HBA_WWN& port) {
    Thread::sleep(plug_pause);
    AttributeBuffer attributes(AttributeBuffer::capacity);
    if (rm::LRM_GetPortAttributes(port, attributes.data(), &attributes.size) != RM_STATUS_OK) {
        return true;
    }
    const std::optional<uint32> topology = getAttributeNumber(attributes, RM_PA_TOPOLOGY);
    if ((topology != 20u && topology != 21u) ||
        getAttributeCounter(attributes, RM_PA_FABRIC_NAME) != uint64{0}) {
        return false;
    }
    constexpr std::size_t room = 316;
    static_assert(room >= sizeof(HBA_FCPTARGETMAPPING));
    alignas(HBA_FCPTARGETMAPPING) std::byte buffer[room] = {};
    auto& mapping = *new (buffer) HBA_FCPTARGETMAPPING{};
    mapping.NumberOfEntries = 1;
    rm::LRM_GetFcpTargetMapping(port, &mapping);
    return mapping.NumberOfEntries == 0;
}

// ---- tests that are single calls

// Calls `attempt`, which answers a status, until the adapter isn't busy. `logs_success` tells
// whether the text of a success is logged; it is `success`.
template <class Attempt>
uint32 run_call(const Diagnostic_Request& request, const std::string& success, bool logs_success,
                Attempt attempt, Ref<TVRHBA_ConcreteJob>& job) {
    uint32 status = RM_STATUS_ADAPTER_BUSY;
    for (int i = 0; i < busy_attempts && status == RM_STATUS_ADAPTER_BUSY; ++i) {
        status = attempt();
        const bool passed = status == RM_STATUS_OK;
        if (status == RM_STATUS_ADAPTER_BUSY || status == RM_STATUS_DIAG_NOT_AVAILABLE ||
            status == RM_STATUS_NOT_SUPPORTED || status == RM_STATUS_RESET_NOT_POSSIBLE) {
            continue;
        }
        const std::string text = passed ? success : failure_text(request, status);
        if (!passed || logs_success) {
            TVR_LOG("%s", text.c_str());
        }
        if (!passed && i > 0) {
            break;
        }
        keep_result(request, {text, passed}, job);
        TVR_LOG("%s Succesful", name_of(request));
        return status;
    }
    return give_up(status, job);
}

// Whether it is a port of this host; the log tells if not.
bool is_valid(const Diagnostic_Request& request) {
    if (TVR_MethodWrapper::Validatewwpn(request.port) != 0) {
        TVR_LOG("INVALID wwpn/Mac Address");
        return false;
    }
    return true;
}

// ---- the beacon

// Switches the beacon; `text` becomes how that came out.
uint32 switch_beacon(const Diagnostic_Request& request, uint32 state, std::string& text) {
    const uint32 status = rm::LRM_DiagBeacon(request.port, state);
    text = status == RM_STATUS_OK ? success_text(request) : failure_text(request, status);
    TVR_LOG("%s", text.c_str());
    return status;
}

// On for a second and off for a second, 20 times or until it can't be switched.
uint32 flash_beacon(const Diagnostic_Request& request, std::string& text) {
    for (int half = 0; half < 2 * beacon_cycles; ++half) {
        const uint32 status =
            switch_beacon(request, half % 2 == 0 ? RM_BEACON_ON : RM_BEACON_OFF, text);
        if (status != RM_STATUS_OK) {
            return status;
        }
        Thread::sleep(beacon_pause);
    }
    return RM_STATUS_OK;
}

} // namespace

uint32 EchoTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job) {
    TVR_LOG("TVR_Diagnostics::EchoTest/Ping");
    const Test_Data data(request.settings);
    uint32 status = RM_STATUS_OK;
    if (!is_enabled(request, status)) {
        return status;
    }
    HBA_WWN target{};
    const char* target_text = request.settings.TargetDevice.value.c_str();
    if (!TVR_MethodWrapper::deviceIdToHBAName(target, target_text,
                                              {"TVR_Diagnostics::EchoTest::Id2HBAName failed",
                                               "TVR_Diagnostics::EchoTest::str2HBAName failed"})) {
        return bad_argument;
    }
    TVR_LOG("Diagnostics Name : %s", name_of(request));
    TVR_LOG("Number of test cycles set to run : %d ", data.cycles);
    TVR_LOG("HaltOnError value : %d ", data.halt_on_error);
    TVR_LOG("Pattern used for testing %s", data.pattern);
    TVR_LOG("TargetDevice WWPN to check : %s", target_text);
    uint32 test_id = 0;
    status = rm::LRM_DiagEchoTestV2(request.port, target, data.cycles, data.halt_on_error, &test_id,
                                    0, data.pattern);
    return status == RM_STATUS_OK ? await_end(request, test_id, echo_traits, job)
                                  : give_up(status, job);
}

uint32 LoopBackTest(const Diagnostic_Request& request, uint32 type, Ref<TVRHBA_ConcreteJob>& job) {
    constexpr uint32 external = 0;
    constexpr uint32 internal = 1;
    TVR_LOG("TVR_Diagnostics::LoopBackTest");
    const Test_Data data(request.settings);
    if (type != LOOPBACK_INTERNAL && type != LOOPBACK_HOST && type != LOOPBACK_EXTERNAL) {
        TVR_LOG("Error: Wrong Test type passed");
        return bad_type;
    }
    uint32 status = RM_STATUS_OK;
    if (!is_enabled(request, status)) {
        return status;
    }
    TVR_LOG("%s", name_of(request));
    TVR_LOG("Number of test cycles set to run : %d ", data.cycles);
    TVR_LOG("HaltOnError value : %d ", data.halt_on_error);
    TVR_LOG("The Input pattern used for testing %s", data.pattern);
    uint32 test_id = 0;
    if (type == LOOPBACK_HOST) {
        status = rm::LRM_DiagPciLoopBackTestV2(request.port, data.cycles, data.halt_on_error,
                                               &test_id, 0, data.pattern);
    } else {
        if (type == LOOPBACK_EXTERNAL && !has_loopback_plug(request.port)) {
            TVR_LOG("Loopback plug is not detected. Unabled to run test. Install loopback plug and "
                    "make sure HBA Port is Up/Ready..");
            return bad_argument;
        }
        status = rm::LRM_DiagLoopBackTestV3(
            request.port, type == LOOPBACK_EXTERNAL ? external : internal, data.cycles,
            data.halt_on_error, &test_id, 0, data.pattern);
    }
    return status == RM_STATUS_OK ? await_end(request, test_id, loopback_traits, job)
                                  : give_up(status, job);
}

uint32 SelfTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job) {
    TVR_LOG("TVR_DiagTestFunc::SelfTest");
    uint32 status = RM_STATUS_OK;
    if (!is_enabled(request, status)) {
        return status;
    }
    uint32 test_id = 0;
    status = rm::LRM_DiagRunPOST(request.port, &test_id);
    return status == RM_STATUS_OK ? await_end(request, test_id, self_traits, job)
                                  : give_up(status, job);
}

uint32 FCHBAResetTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job) {
    TVR_LOG("TVR_DiagTestFunc::FCHBAResetTest");
    if (!is_valid(request)) {
        return bad_port;
    }
    return run_call(
        request, std::string(name_of(request)) + " Success", true,
        [&] { return TVR_MethodWrapper::tvrcimResetHBA(request.port); }, job);
}

uint32 StatusTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job) {
    TVR_LOG("TVR_DiagTestFunc::StatusTest");
    if (!is_valid(request)) {
        return bad_port;
    }
    const std::unique_ptr<std::byte[]> buffer(new (std::nothrow)
                                                  std::byte[RM_PORT_ATTRIBUTES_SIZE]);
    if (!buffer) {
        TVR_LOG("ERROR: GetPHYPortAttributeValues: Unable to allocate buffer");
        return no_buffer;
    }
    return run_call(
        request, success_text(request), false,
        [&] {
            uint32 size = RM_PORT_ATTRIBUTES_SIZE;
            const uint32 status = rm::LRM_GetPortAttributes(request.port, buffer.get(), &size);
            TVR_LOG("RM_GetPortAttributes call result : %d", status);
            return status;
        },
        job);
}

uint32 BeaconTest(const Diagnostic_Request& request, Ref<TVRHBA_ConcreteJob>& job) {
    TVR_LOG("TVR_DiagTestFunc::BeaconTest");
    if (!is_valid(request)) {
        return bad_argument;
    }
    uint32 before = 0;
    uint32 status = rm::LRM_DiagBeaconState(request.port, &before);
    std::string text;
    if (status != RM_STATUS_OK) {
        keep_result(request, {text, false}, job);
        TVR_LOG("%s Succesful", name_of(request));
        return status;
    }
    if (before == RM_BEACON_NOT_AVAILABLE) {
        TVR_LOG("Beacon state Not Available. Beaconing not set");
        TVR_LOG("%s", failure_text(request, RM_STATUS_OK).c_str());
        return give_up(RM_STATUS_OK, job);
    }
    status = flash_beacon(request, text);
    if (rm::LRM_DiagBeacon(request.port, before) != RM_STATUS_OK) {
        TVR_LOG("Unable to set the previous beacon state");
    }
    if (status != RM_STATUS_OK) {
        return give_up(status, job);
    }
    keep_result(request, {text, true}, job);
    TVR_LOG("%s Succesful", name_of(request));
    return RM_STATUS_OK;
}

} // namespace cimple
