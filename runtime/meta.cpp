#include "runtime/meta.h"

#include "runtime/instance.h"

namespace cimple {

const Meta_Class Instance::static_meta_class = {
    {{0, FLAG_CLASS, "Instance", nullptr, 0}, nullptr, 0, sizeof(Instance)},
    nullptr,
    nullptr,
    0,
    nullptr};

const Meta_Class* find_meta_class(const Meta_Repository* repository, const char* name) noexcept {
    if (repository == nullptr || name == nullptr) {
        return nullptr;
    }
    for (uint64 i = 0; i < repository->num_meta_classes; ++i) {
        const Meta_Class* meta_class = repository->meta_classes[i];
        if (eqi(meta_class->name, name)) {
            return meta_class;
        }
    }
    return nullptr;
}

const Meta_Feature* find_feature(const Meta_Structure* structure, const char* name,
                                 uint32 mask) noexcept {
    if (structure == nullptr || name == nullptr) {
        return nullptr;
    }
    for (const Meta_Feature* feature : *structure) {
        if (feature->has(mask) && eqi(feature->name, name)) {
            return feature;
        }
    }
    return nullptr;
}

bool is_subclass(const Meta_Class* ancestor, const Meta_Class* descendant) noexcept {
    if (ancestor == nullptr || descendant == nullptr) {
        return false;
    }
    if (ancestor == &Instance::static_meta_class ||
        eqi(ancestor->name, Instance::static_meta_class.name)) {
        return true;
    }
    for (; descendant != nullptr; descendant = descendant->super_meta_class) {
        if (descendant == ancestor || eqi(descendant->name, ancestor->name)) {
            return true;
        }
    }
    return false;
}

} // namespace cimple
