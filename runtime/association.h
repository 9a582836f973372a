// Associations: which instances one refers to, and the choice among many by an end or by key.
#ifndef TVR_RUNTIME_ASSOCIATION_H
#define TVR_RUNTIME_ASSOCIATION_H

#include "runtime/instance.h"

namespace cimple {

// The single references of an association are its ends. A source is matched with an end by class
// (the reference's or one below it) and by the keys of the source's class; namespaces count for
// nothing. An empty `role` means any reference, else it is the reference's name without regard to
// case.

// True if a reference of that role has the source at its end.
bool is_reference_end(const Instance* source, const Instance* association,
                      const String& role) noexcept;

// Gathers the other ends of an association, in the order of its references, into `ends_out`, whose
// former content goes; no count is added. An end counts if its class is `result_class` or below it
// and its reference is called `result_role`, each where not empty. Returns their number, or -1 with
// no ends if the source is none in that role. Whatever refers to the source is the source's own
// end.
long get_association_ends(const Instance* source, const Instance* association,
                          const String& result_class, const String& role, const String& result_role,
                          Array<Instance*>& ends_out);

// What the caller of an enumeration will keep of it, so that a provider may leave out the rest.
// Borrows what it is made from.
class Instance_Selector {
public:
    // Instances with the keys of the model.
    static Instance_Selector by_key(const Instance& model) noexcept { return {model, nullptr}; }
    // Associations that have the source at an end.
    static Instance_Selector by_end(const Instance& source, const String& role) noexcept {
        return {source, &role};
    }

    // The model, or the source.
    const Instance& instance() const noexcept { return *_instance; }
    bool is_by_key() const noexcept { return _role == nullptr; }

    bool accepts(const Instance* candidate) const noexcept {
        return is_by_key() ? key_eq(_instance, candidate)
                           : is_reference_end(_instance, candidate, *_role);
    }

private:
    Instance_Selector(const Instance& instance, const String* role) noexcept
        : _instance(&instance), _role(role) {}

    const Instance* _instance;
    const String* _role; // null: by key
};

} // namespace cimple

#endif
