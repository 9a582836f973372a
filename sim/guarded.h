// The frame of every exported function.
#pragma once

#include "sim/host.h"

namespace tvrsim {

/// Counts the call, obeys the rules, then does the work. Nothing is thrown into C.
template <class Work>
uint32_t guarded(EntryPoint entryPoint, const Subject& subject, Work work) noexcept {
    try {
        if (const auto forced = Host::instance().rules().enter(entryPoint, subject)) {
            return *forced;
        }
        return work(Host::instance());
    } catch (...) {
        return RM_STATUS_ERROR;
    }
}

} // namespace tvrsim
