// Associations of services. A rebuild goes on without one that isn't made or inserted.
#ifndef TVR_AGENT_SERVICE_LINKS_H
#define TVR_AGENT_SERVICE_LINKS_H

#include "agent/creation.h"

namespace cimple {

// Whether what the log says of an association that isn't made or inserted tells its class.
enum class Lines { plain, with_class };

// Null if there is no memory for it.
template <class C> Ref<C> try_association(const char* name_space, Lines lines = Lines::plain) {
    Ref<C> association = try_make<C>(name_space);
    if (!association) {
        if (lines == Lines::with_class) {
            TVR_LOG("Unable to create instance of %s", C::static_meta_class.name);
        } else {
            TVR_LOG("Could not create the instance of the Association class");
        }
    }
    return association;
}

template <class C>
void add_association(Instance_Maps& maps, Ref<C> association, Lines lines = Lines::plain) {
    if (lines == Lines::with_class) {
        add(maps, std::move(association));
    } else {
        insert(maps.*map_of<C>, std::move(association), "Insert Failed");
    }
}

} // namespace cimple

#endif
