// The one class through which providers and data model reach the RM library.
#ifndef TVR_ACCESS_METHOD_WRAPPER_H
#define TVR_ACCESS_METHOD_WRAPPER_H

#include "access/rm/rm_api.h"
#include "runtime/type.h"

#include <string_view>
#include <vector>

namespace cimple {

// An object stands for an initialised RM library. It has no data of its own: what is here beside
// construction and destruction needs no object.
//
// World wide names have these text forms: 16 digits (the DeviceID form), and 23 characters with
// colons between the pairs of digits.
class TVR_MethodWrapper {
public:
    // Initialises the RM library; throws std::runtime_error when LRM_InitLib answers a positive
    // status, or when another construction in this process does not end in time.
    //
    // Two named semaphores, "/TVR_RM_INIT_LIB_<pid>" and "/TVR_RM_INIT_LIB_DONE_<pid>", order the
    // constructions of one process. As long as this module has no other object, a semaphore of that
    // name is what a dead process with the same id has left, and is removed first. Every wait has a
    // limit (see setInitLibWait). The second name is removed at the module's end.
    TVR_MethodWrapper();
    ~TVR_MethodWrapper();
    TVR_MethodWrapper(const TVR_MethodWrapper&) = delete;
    TVR_MethodWrapper& operator=(const TVR_MethodWrapper&) = delete;

    // Buffer for a colon form and its terminator.
    static constexpr std::size_t hbaNameTextSize = 24;

    // Puts colons between the pairs of a 16-digit text, after an optional opening quote; no
    // character is checked, and a text that is too short gives a short result. 0, or 1 for a null
    // argument.
    static uint32 Id2HBAName(char* out, const char* deviceId);

    // Reads the colon form. 0, or 1 for any other text, with the output unchanged.
    static uint32 str2HBAName(HBA_WWN* out, const char* text);

    // Reads the 16-digit form. 1 for success, unlike the others; 0 with the output unchanged.
    static uint32 string2HBAName(HBA_WWN& out, std::string_view text);

    // Writes the colon form in upper case; nothing into a null buffer. Answers 0.
    static uint32 hbaNameToText(char* out, const HBA_WWN& name);

    // 0 when the name belongs to an adapter of this host, else 1.
    static uint32 Validatewwpn(HBA_WWN name);

    // Logs a status with the library's text for it.
    static void logRMStatus(RM_STATUS status);

    // 1 when the name is in the list, else 0, and the list has it then. When memory is exhausted
    // the list is emptied and the answer 0.
    static uint32 isDuplicateEntryInWWPNList(const HBA_WWN& name, std::vector<HBA_WWN>& list);
};

// How long a construction waits for another one of the same process, in milliseconds; one minute at
// start. Returns what was set before.
uint32 setInitLibWait(uint32 milliseconds) noexcept;

} // namespace cimple

#endif
