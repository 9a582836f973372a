#include "derivedObjects/map_backed_provider.h"

#include <cstdio>

namespace cimple {

void log_member_call(const Meta_Class& meta_class, uint32 line, const char* member) noexcept {
    char file[128];
    std::snprintf(file, sizeof file, "derivedObjects/%s_Provider.cpp", meta_class.name);
    CLogger::getInstance().log(file, line, TVR_DBG, "%s_Provider::%s()", meta_class.name, member);
}

} // namespace cimple
