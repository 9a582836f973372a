// The floor of an enumeration: a provider written by hand straight on CMPI, which hands out
// instances that it has ready and does nothing else.
#ifndef TVR_BENCH_BARE_PROVIDER_H
#define TVR_BENCH_BARE_PROVIDER_H

#include "host/object_manager.h"

#include <vector>

namespace tvrbench {

// Takes over the instances, all of one class, that the provider hands out from then on.
void set_bare_instances(const std::vector<tvrhost::Cim_Instance>& instances);

// The provider's factory, for any class.
tvrhost::Any_Function bare_factory(const std::string& name);

} // namespace tvrbench

#endif
