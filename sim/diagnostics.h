// Diagnostic tests: how those of a port go, and the one that runs, as data. Tests advance with the
// calls that ask for their results, not with time.
#pragma once

#include "sim/json_reader.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace tvrsim {

enum class TestKind : uint32_t { echo, internalLoopback, externalLoopback, hostLoopback, selfTest };
inline constexpr size_t testKinds = 5;

/// How tests of one kind go at a port. What is empty comes of the test and the port.
struct TestBehaviour {
    uint32_t polls = 1; ///< answers that find it running
    bool hangs = false; ///< it runs until it is canceled
    std::vector<uint32_t> states = {RM_TEST_PENDING, RM_TEST_RUNNING}; ///< the last one stays
    RM_STATUS statusWhileRunning = RM_STATUS_OK;
    uint32_t cancelPolls = 0; ///< further answers that find a canceled test running
    uint32_t finalState = RM_TEST_FINISHED;
    std::optional<uint32_t> resultCode;
    std::optional<uint32_t> completedCycles;
    std::optional<uint32_t> loopsFailed;
    std::optional<uint32_t> timeToExecute;
};

/// By TestKind; a port lacks the kinds that are empty.
using Diagnostics = std::array<std::optional<TestBehaviour>, testKinds>;

/// All kinds with usual behaviour.
Diagnostics usualDiagnostics();

/// What the record of a test says at its end.
struct TestOutcome {
    uint32_t state = RM_TEST_FINISHED;
    uint32_t resultCode = 0;
    uint32_t completedCycles = 0;
    uint32_t loopsFailed = 0;
};

/// What a caller has asked for.
struct TestOrder {
    TestKind kind = TestKind::selfTest;
    uint32_t cycles = 1;
    bool haltsOnError = false;
    HBA_WWN target = {}; ///< of an echo test
};

/// The latest test of an adapter.
struct DiagnosticTest {
    uint32_t id = 0;
    HBA_WWN port = {};
    TestOrder order;
    TestBehaviour behaviour;
    uint32_t polls = 0; ///< answers so far that found it running
    std::optional<uint32_t> cancelPollsLeft;
    std::optional<TestOutcome> outcome; ///< empty while it runs
};

/// Ends a test that runs, as a reset of its adapter does.
void abortTest(std::optional<DiagnosticTest>& test);

/// Reads the "diagnostics" field of a port. Throws FormatError.
void readDiagnostics(ObjectReader& port, std::optional<Diagnostics>& diagnostics);

} // namespace tvrsim
