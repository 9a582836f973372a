#include "sim/diagnostics.h"

#include "sim/host.h"
#include "sim/part_reader.h"
#include "sim/rm_behaviour.h"
#include "sim/scenario_names.h"

#include <algorithm>
#include <atomic>

namespace tvrsim {

namespace {

enum TestResult : uint32_t {
    testSucceeded = 0,
    testFoundLinkDown = 2,
    testReceivedNothing = 6,
    testTargetUnreachable = 10,
    testMetReset = 15,
    testPortNotReady = 19,
};

constexpr size_t mostTestStates = 1024;

constexpr std::array<std::string_view, testKinds> testKindNames = {
    "echo", "internalLoopback", "externalLoopback", "hostLoopback", "selfTest",
};

/// Identifiers have 16 bits; callers use the lowest and the highest for tests without one.
uint32_t nextTestId() {
    static std::atomic<uint32_t> last{0};
    return last++ % 65534 + 1;
}

std::vector<uint32_t> readTestStates(const Json& value, const std::string& path) {
    std::vector<uint32_t> states;
    if (!value.is_array()) {
        states.push_back(readNamed(value, path, testStateWords));
        return states;
    }
    if (value.size() == 0 || value.size() > mostTestStates) {
        throw FormatError(path, "1 to " + std::to_string(mostTestStates) + " states are wanted");
    }
    forEachElement(value, path, [&](const Json& each, const std::string& place, size_t) {
        states.push_back(readNamed(each, place, testStateWords));
    });
    return states;
}

void readTestBehaviour(ObjectReader& reader, TestBehaviour& behaviour) {
    reader.number("polls", behaviour.polls);
    reader.flag("hangs", behaviour.hangs);
    if (const Json* states = reader.find("statesWhileRunning")) {
        behaviour.states = readTestStates(*states, reader.pathOf("statesWhileRunning"));
    }
    reader.number("statusWhileRunning", behaviour.statusWhileRunning);
    reader.number("cancelPolls", behaviour.cancelPolls);
    reader.named("finalState", behaviour.finalState, testStateWords);
    reader.optionalNumber("resultCode", behaviour.resultCode);
    reader.optionalNumber("completedCycles", behaviour.completedCycles);
    reader.optionalNumber("loopsFailed", behaviour.loopsFailed);
    reader.optionalNumber("timeToExecute", behaviour.timeToExecute);
}

TestBehaviour usualTestBehaviour() {
    return {};
}

/// The verdict that the port and its surroundings give.
TestResult verdictOf(const Port& port, const TestOrder& order) {
    if (physicalStateOf(port) == RM_PORT_STATE_DISABLED) {
        return testPortNotReady;
    }
    const bool hasPlug = port.behindPlug.has_value();
    const bool usesLink = order.kind == TestKind::echo || order.kind == TestKind::externalLoopback;
    if (usesLink && !hasPlug && !linkOf(port).isUp) {
        return testFoundLinkDown;
    }
    if (order.kind == TestKind::echo && !port.targets->hasPort(order.target)) {
        return testTargetUnreachable;
    }
    if (order.kind == TestKind::externalLoopback && !hasPlug) {
        return testReceivedNothing;
    }
    return testSucceeded;
}

/// The outcome of a test that came to its end. One that fails does so in each cycle.
TestOutcome outcomeOf(const Port& port, const DiagnosticTest& test) {
    const TestBehaviour& behaviour = test.behaviour;
    const TestOrder& order = test.order;
    TestOutcome outcome;
    outcome.state = behaviour.finalState;
    outcome.resultCode = behaviour.resultCode.value_or(verdictOf(port, order));
    const bool fails = outcome.resultCode != testSucceeded;
    const uint32_t cycles = fails && order.haltsOnError ? std::min(order.cycles, 1u) : order.cycles;
    outcome.completedCycles = behaviour.completedCycles.value_or(cycles);
    outcome.loopsFailed = behaviour.loopsFailed.value_or(fails ? cycles : 0);
    return outcome;
}

/// A test that stopped before its end, with a cycle for each answer.
TestOutcome stoppedTest(const DiagnosticTest& test, uint32_t state, uint32_t resultCode) {
    return {state, resultCode, std::min(test.order.cycles, test.polls), 0};
}

/// Brings a running test one answer further.
void advanceTest(const Port& port, DiagnosticTest& test) {
    if (test.cancelPollsLeft == 0u) {
        test.outcome = stoppedTest(test, RM_TEST_CANCELED, testSucceeded);
    } else if (!test.behaviour.hangs && test.polls >= test.behaviour.polls) {
        test.outcome = outcomeOf(port, test);
    } else {
        test.polls += test.polls < UINT32_MAX ? 1 : 0;
        if (test.cancelPollsLeft) {
            --*test.cancelPollsLeft;
        }
    }
}

RM_STATUS tellTest(const DiagnosticTest& test, RM_DIAGRESULT& result) {
    const std::vector<uint32_t>& states = test.behaviour.states;
    const bool runs = !test.outcome;
    const TestOutcome told =
        runs ? stoppedTest(test, states[std::min<size_t>(test.polls, states.size()) - 1], 0)
             : *test.outcome;
    result.state = told.state;
    result.resultCode = told.resultCode;
    result.completedCycles = told.completedCycles;
    result.loopsFailed = told.loopsFailed;
    result.timeToExecute = test.behaviour.timeToExecute.value_or(test.polls);
    return runs ? test.behaviour.statusWhileRunning : RM_STATUS_OK;
}

RM_STATUS startTest(const HBA_WWN& port, const TestOrder& order, uint32_t* id) {
    return Host::instance().withPort(port, [&](Adapter& adapter, Port& found) {
        const auto kind = static_cast<size_t>(order.kind);
        if (!found.diagnostics || !found.diagnostics->at(kind)) {
            return RM_STATUS_DIAG_NOT_AVAILABLE;
        }
        if (id == nullptr) {
            return RM_STATUS_ERROR;
        }
        if (adapter.test && !adapter.test->outcome) {
            return RM_STATUS_TOO_MANY_TESTS;
        }
        DiagnosticTest& test = adapter.test.emplace();
        test.id = nextTestId();
        test.port = port;
        test.order = order;
        test.behaviour = *found.diagnostics->at(kind);
        *id = test.id;
        return RM_STATUS_OK;
    });
}

/// The same for a test that sends a pattern.
RM_STATUS startPatternTest(const HBA_WWN& port, const TestOrder& order, uint32_t* id,
                           uint32_t flags, const void* pattern) {
    if (flags != 0 || pattern == nullptr) {
        return RM_STATUS_ERROR;
    }
    return startTest(port, order, id);
}

/// Calls work with the port and its test of that identifier.
template <class Work> RM_STATUS withTest(const HBA_WWN& port, uint32_t id, Work work) {
    return Host::instance().withPort(port, [&](Adapter& adapter, Port& found) -> RM_STATUS {
        if (!found.diagnostics) {
            return RM_STATUS_DIAG_NOT_AVAILABLE;
        }
        std::optional<DiagnosticTest>& test = adapter.test;
        if (!test || test->id != id || numberOf(test->port) != numberOf(port)) {
            return RM_STATUS_ERROR;
        }
        return work(found, *test);
    });
}

} // namespace

Diagnostics usualDiagnostics() {
    Diagnostics diagnostics;
    diagnostics.fill(usualTestBehaviour());
    return diagnostics;
}

void abortTest(std::optional<DiagnosticTest>& test) {
    if (test && !test->outcome) {
        test->outcome = stoppedTest(*test, RM_TEST_FINISHED, testMetReset);
    }
}

void readDiagnostics(ObjectReader& port, std::optional<Diagnostics>& diagnostics) {
    readPart(port, "diagnostics", diagnostics, usualDiagnostics,
             [](ObjectReader& reader, Diagnostics& kinds) {
                 for (size_t i = 0; i < testKinds; ++i) {
                     readPart(reader, testKindNames[i], kinds[i], usualTestBehaviour,
                              readTestBehaviour);
                 }
             });
}

namespace behaviour {

RM_STATUS DiagEchoTestV2(HBA_WWN port, HBA_WWN target, uint32_t cycles, uint32_t halt,
                         uint32_t* test, uint32_t flags, const void* pattern) {
    return startPatternTest(port, {TestKind::echo, cycles, halt != 0, target}, test, flags,
                            pattern);
}

RM_STATUS DiagLoopBackTestV3(HBA_WWN port, uint32_t internal, uint32_t cycles, uint32_t halt,
                             uint32_t* test, uint32_t flags, const void* pattern) {
    if (internal > 1) {
        return RM_STATUS_ERROR;
    }
    const TestKind kind = internal != 0 ? TestKind::internalLoopback : TestKind::externalLoopback;
    return startPatternTest(port, {kind, cycles, halt != 0, {}}, test, flags, pattern);
}

RM_STATUS DiagPciLoopBackTestV2(HBA_WWN port, uint32_t cycles, uint32_t halt, uint32_t* test,
                                uint32_t flags, const void* pattern) {
    return startPatternTest(port, {TestKind::hostLoopback, cycles, halt != 0, {}}, test, flags,
                            pattern);
}

RM_STATUS DiagRunPOST(HBA_WWN port, uint32_t* test) {
    return startTest(port, {}, test);
}

RM_STATUS DiagGetResults(HBA_WWN port, uint32_t test, RM_DIAGRESULT* result) {
    return withTest(port, test, [=](const Port& found, DiagnosticTest& running) -> RM_STATUS {
        if (result == nullptr) {
            return RM_STATUS_ERROR;
        }
        if (!running.outcome) {
            advanceTest(found, running);
        }
        return tellTest(running, *result);
    });
}

RM_STATUS DiagCancelDiagnostic(HBA_WWN port, uint32_t test) {
    return withTest(port, test, [](const Port&, DiagnosticTest& running) {
        if (running.outcome) {
            return running.outcome->state == RM_TEST_CANCELED ? RM_STATUS_OK : RM_STATUS_ERROR;
        }
        if (!running.cancelPollsLeft) {
            running.cancelPollsLeft = running.behaviour.cancelPolls;
        }
        return RM_STATUS_OK;
    });
}

} // namespace behaviour

} // namespace tvrsim
