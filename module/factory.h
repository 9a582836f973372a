// The exported factories of a class provider, from which an object manager gets the MI of a kind.
// Each kind has two names, with and without "_Provider", and a call of either is one load that
// needs its own cleanup. A factory answers null if the provider could not be made; the status that
// CMPI passes along isn't written.
#ifndef TVR_MODULE_FACTORY_H
#define TVR_MODULE_FACTORY_H

#include "runtime/cmpi_adapter.h"

namespace cimple {

// What every registration of the module names as its module.
inline constexpr char module_name[] = "tavrin_fc_provider_Module";

// Body of a factory: the MI of a kind, or null.
template <class MI>
MI* make_mi(CMPI_Static_Data& static_data, const Registration& registration,
            const CMPIBroker* broker, const CMPIContext* context, char kind) noexcept {
    void* mi = nullptr;
    cimple_cmpi_adapter(static_data, &registration, broker, context, registration.provider_name,
                        kind, mi);
    return static_cast<MI*>(mi);
}

} // namespace cimple

#define TVR_FACTORY_ARGUMENTS                                                                      \
    (const CMPIBroker* broker, const CMPIContext* context, CMPIStatus* status)

// Declares both factories of a kind, as `TVR_DECLARE_FACTORIES(TVRHBA_FCPort, Instance)`.
#define TVR_DECLARE_FACTORIES(class_name, kind)                                                    \
    extern "C" __attribute__((visibility("default")))                                              \
    CMPI##kind##MI* class_name##_Provider_Create_##kind##MI TVR_FACTORY_ARGUMENTS;                 \
    extern "C" __attribute__((visibility("default")))                                              \
    CMPI##kind##MI* class_name##_Create_##kind##MI TVR_FACTORY_ARGUMENTS;

// Defines them; `letter` is the kind's letter for the adapter.
#define TVR_FACTORIES(class_name, kind, letter)                                                    \
    CMPI##kind##MI* class_name##_Provider_Create_##kind##MI(                                       \
        const CMPIBroker* broker, const CMPIContext* context, CMPIStatus*) {                       \
        return cimple::make_mi<CMPI##kind##MI>(cimple::class_name##_static_data,                   \
                                               cimple::class_name##_registration, broker, context, \
                                               letter);                                            \
    }                                                                                              \
    CMPI##kind##MI* class_name##_Create_##kind##MI TVR_FACTORY_ARGUMENTS {                         \
        return class_name##_Provider_Create_##kind##MI(broker, context, status);                   \
    }

#endif
