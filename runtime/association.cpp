#include "runtime/association.h"

namespace cimple {

namespace {

bool is_single_reference(const Meta_Feature& feature) noexcept {
    return feature.has(FLAG_REFERENCE) && !as_reference(feature).is_array();
}

// An empty name asks for nothing.
bool is_named(const Meta_Feature& feature, const String& name) noexcept {
    return name.empty() || eqi(feature.name, name.c_str());
}

bool refers_to(const Instance* association, const Meta_Reference& reference,
               const Instance* source) noexcept {
    const Instance* target = reference_field(association, reference);
    return target != nullptr && is_subclass(reference.meta_class, class_of(source)) &&
           key_eq(source, target);
}

bool is_of_class(const Instance* instance, const String& class_name) noexcept {
    for (const Meta_Class* meta_class = class_of(instance); meta_class != nullptr;
         meta_class = meta_class->super_meta_class) {
        if (eqi(meta_class->name, class_name.c_str())) {
            return true;
        }
    }
    return false;
}

} // namespace

bool is_reference_end(const Instance* source, const Instance* association,
                      const String& role) noexcept {
    for (const Meta_Feature* feature : *association->__meta_class) {
        if (is_single_reference(*feature) && is_named(*feature, role) &&
            refers_to(association, as_reference(*feature), source)) {
            return true;
        }
    }
    return false;
}

long get_association_ends(const Instance* source, const Instance* association,
                          const String& result_class, const String& role, const String& result_role,
                          Array<Instance*>& ends_out) {
    ends_out.clear();
    bool found = false;
    for (const Meta_Feature* feature : *association->__meta_class) {
        if (!is_single_reference(*feature)) {
            continue;
        }
        if (refers_to(association, as_reference(*feature), source)) {
            found = found || is_named(*feature, role);
            continue;
        }
        Instance* target = reference_field(association, as_reference(*feature));
        if (target != nullptr && is_named(*feature, result_role) &&
            (result_class.empty() || is_of_class(target, result_class))) {
            ends_out.append(target);
        }
    }
    if (!found) {
        ends_out.clear();
        return -1;
    }
    return static_cast<long>(ends_out.size());
}

} // namespace cimple
