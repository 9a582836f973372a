// The steps of creators that answer a status: the first one that fails ends the work.
#ifndef TVR_AGENT_FEATURE_H
#define TVR_AGENT_FEATURE_H

#include "access/method_wrapper.h"
#include "agent/creation.h"
#include "common/tvr_common.h"

namespace cimple {

// Ends the work with that status; its line is in the log.
struct Feature_Failed {
    uint32 status;
};

// Does `work`, which answers a status and may throw the former; `no_memory` is the status when
// memory is exhausted.
template <class Work> uint32 create_feature(uint32 no_memory, Work&& work) {
    try {
        return work();
    } catch (const Feature_Failed& failed) {
        return failed.status;
    } catch (const std::bad_alloc&) {
        return no_memory;
    }
}

// A new instance; without memory for it the work ends with that status, and the log tells what
// could not be made.
template <class C> Ref<C> make_or_fail(const char* what, uint32 status) {
    Ref<C> instance = try_make<C>();
    if (!instance) {
        TVR_LOG("Failed to create %s", what);
        throw Feature_Failed{status};
    }
    return instance;
}

// As `add`; the work ends if the key is there already.
template <class C> const C& add_or_fail(Instance_Maps& maps, Ref<C> instance) {
    const C* added = add(maps, std::move(instance));
    if (added == nullptr) {
        throw Feature_Failed{TVR_FAILURE};
    }
    return *added;
}

inline HBA_WWN name_or_fail(const std::string& device_id,
                            const TVR_MethodWrapper::NameLines& lines) {
    HBA_WWN name{};
    if (!TVR_MethodWrapper::deviceIdToHBAName(name, device_id, lines)) {
        throw Feature_Failed{TVR_FAILURE};
    }
    return name;
}

} // namespace cimple

#endif
