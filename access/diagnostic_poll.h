// How the end of a test that the adapter carries out is waited for, and what it and a failure mean.
#ifndef TVR_ACCESS_DIAGNOSTIC_POLL_H
#define TVR_ACCESS_DIAGNOSTIC_POLL_H

#include "access/rm/rm_api.h"
#include "runtime/type.h"

namespace cimple {

// The verdict on a test, from the result code of its record.
const char* MapDiagResultStatus(uint32 code) noexcept;
// What a status of the library means for a test.
const char* MapDiagStatus(uint32 status) noexcept;

// A test that the adapter runs.
struct Running_Test {
    HBA_WWN port;
    const char* name;
    uint32 id; // the library's
};

// How it came out.
struct Diagnostic_Poll {
    // The test is over, whichever way; else it was given up, and `status` tells why: 0 or "not
    // ready yet" for one that took too long.
    bool is_over;
    uint32 status;
    RM_DIAGRESULT result;
};

// Asks for the results once a second until the test is over, 121 times; then the test is canceled.
// The log tells of each call, with its status if `with_status` is set. Blocks for about two minutes
// at most, and four if the test doesn't let itself be canceled.
Diagnostic_Poll poll_results(const Running_Test& test, bool with_status);

// Cancels a test, and asks once a second whether it has ended, 122 times. 0 for one that has; 1 for
// a null name or an id of 0; or what the library said at last.
uint32 CancelTest(const Running_Test& test);

} // namespace cimple

#endif
