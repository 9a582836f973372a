// What the methods and modifications of the providers have in common.
//
// They run one at a time: each passes the agent's gate and holds all three of its locks to the end,
// also when an exception passes, so that no refresh and no enumeration runs meanwhile. None of them
// may wait for a refresh.
#ifndef TVR_PROVIDERS_SERVICE_CALL_H
#define TVR_PROVIDERS_SERVICE_CALL_H

#include "access/library_failure.h"
#include "access/method_wrapper.h"
#include "agent/locks.h"
#include "runtime/provider.h"

namespace cimple {

// What methods answer in `return_value`, beside libraryFailure.
enum Method_Result : uint32 {
    METHOD_COMPLETED = 0,
    METHOD_FAILED = 4,
    METHOD_INVALID_PARAMETER = 5,
    METHOD_NO_TARGET = 4097, // no target or no image
    METHOD_NO_FILE = 4107,
    METHOD_INVALID_PORT = 32968, // also an argument that is out of range
    METHOD_NO_NAME = 32969,
    METHOD_INVALID_INSTANCE = 33068, // of the service
};

// Runs `method`, which gets the agent and answers a Method_Result. The operation itself succeeds
// whatever that is, unless there is no agent to ask.
template <class Method>
Invoke_Method_Status call_method(Property<uint32>& return_value, Method&& method) {
    ProviderAgent* agent = ProviderAgent::instance();
    if (agent == nullptr) {
        return INVOKE_METHOD_FAILED;
    }
    const Full_Guard guard(*agent);
    return_value.set(method(*agent));
    return INVOKE_METHOD_OK;
}

// Runs `modification`, which gets the agent and answers the status.
template <class Modification> Modify_Instance_Status modify(Modification&& modification) {
    ProviderAgent* agent = ProviderAgent::instance();
    if (agent == nullptr) {
        return MODIFY_INSTANCE_FAILED;
    }
    const Full_Guard guard(*agent);
    return modification(*agent);
}

// True for an instance whose keys a member of the map has, and for any while the map is empty.
bool is_known(const Instance_Map& map, const Instance* instance);
// The same; only the first member counts.
bool is_first(const Instance_Map& map, const Instance* instance);

// The target as a port of this host; null without a target, for one of another class, and for a
// port that isn't there.
const TVRHBA_FCPort* find_target(const Instance_Maps& maps, const Instance* target);

// Turns a DeviceID into the name that the libraries use. False, with a line in the log, for a text
// that is none.
using Name_Lines = TVR_MethodWrapper::NameLines;
inline bool read_name(HBA_WWN& name, const String& device_id, const Name_Lines& lines) {
    return TVR_MethodWrapper::deviceIdToHBAName(name, device_id.c_str(), lines);
}

// Asks for a rebuild after an adapter has changed. It begins when the call has ended, and whoever
// comes after that waits for it: a client that has changed something doesn't see it as it was.
void request_rebuild(ProviderAgent& agent);

} // namespace cimple

#endif
