// All exported factories of the module by name, for programs that link its core instead of loading
// it: what `dlsym` finds in the shared object stands here as a table.
#ifndef TVR_MODULE_FACTORIES_H
#define TVR_MODULE_FACTORIES_H

#include <cstddef>

namespace cimple {

using Any_Factory = void (*)();

// One exported name. `function` is, by `kind`, of the CMPI type
//     CMPI<Kind>MI* (*)(const CMPIBroker*, const CMPIContext*, CMPIStatus*)
// and is cast to it before the call, as a symbol from `dlsym` is.
struct Factory {
    const char* name; // as "TVRHBA_FCPort_Provider_Create_InstanceMI"
    Any_Factory function;
    char kind;              // 'I' instance, 'M' method, 'A' association, 'N' indication
    const char* class_name; // as "TVRHBA_FCPort"
};

// In order of registration; of each kind the name with "_Provider" first.
extern const Factory factories[];
extern const std::size_t factory_count;

} // namespace cimple

#endif
