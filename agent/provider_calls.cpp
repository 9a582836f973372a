#include "agent/provider_calls.h"

namespace cimple {

Load_Status load_agent() {
    return ProviderAgent::acquire() ? LOAD_OK : LOAD_FAILED;
}

Unload_Status unload_agent() {
    ProviderAgent::releaseRef();
    return UNLOAD_OK;
}

bool is_agent_loaded(const char* file, uint32 line) noexcept {
    const ProviderAgent* agent = ProviderAgent::instance();
    if (agent != nullptr && agent->m_bIsLoaded) {
        return true;
    }
    CLogger::getInstance().log(file, line, TVR_DBG, "RM Init failed for %s", base_name(file));
    return false;
}

} // namespace cimple
