// Instances: counted blocks with a header and the fields that their metadata describes.
#ifndef TVR_RUNTIME_INSTANCE_H
#define TVR_RUNTIME_INSTANCE_H

#include "runtime/array.h"
#include "runtime/meta.h"

#include <atomic>
#include <type_traits>
#include <utility>

namespace cimple {

// Field of a property: the value, and right behind it 1 if the property is NULL.
template <class T> struct Property {
    T value;
    uint8 null;

    // Stores a value and makes the property not NULL. Numbers are converted to the property's
    // width.
    template <class U> void set(U&& new_value) {
        if constexpr (std::is_arithmetic_v<T>) {
            value = static_cast<T>(new_value);
        } else {
            value = std::forward<U>(new_value);
        }
        null = 0;
    }
    bool is_null() const noexcept { return null != 0; }
};

// Header of every generated structure, of classes and of method calls.
//
// Ownership: an instance owns what its fields hold: strings and datetimes (shared by count), its
// arrays, and one count on each instance that a reference field holds. Instances are made by
// `create` and `clone` and end with the last `unref`, or by `destroy`.
// Threads: the count is atomic; fields are written by one thread before the instance is shared.
struct Instance {
    uint32 __magic; // 0xF00DFACE
    std::atomic<uint32> __refs;
    const Meta_Structure* __meta_class; // the class, or the method of a method call
    String __name_space;

    // Stands for any class: a reference of this type accepts every instance.
    static const Meta_Class static_meta_class;

    Instance() = delete;
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

protected:
    ~Instance() = default;
};

constexpr uint32 instance_magic = 0xF00DFACE;
static_assert(sizeof(Instance) == 24);

// The class of an instance; null for a method call and for null.
const Meta_Class* class_of(const Instance* instance) noexcept;

// A new instance with count 1. With `defaults` every property holds its default or is NULL;
// without, every property reads as not NULL and zero. Throws std::bad_alloc.
Instance* create(const Meta_Structure* structure, bool defaults);

// A deep copy with count 1; texts are shared.
// Asks for the texts of an instance that is to be read soon: they lie scattered in memory.
void prefetch_texts(const Instance* instance) noexcept;
Instance* clone(const Instance* instance);

// Null is ignored by both.
void ref(const Instance* instance) noexcept;
void unref(const Instance* instance) noexcept;

// Ends an instance at once, whatever its count; not for null. Only its sole holder may call it.
void destroy(Instance* instance) noexcept;

// The bytes and null flag of a property, and the pointer of a single reference.
inline void* field(Instance* instance, uint32 offset) noexcept {
    return reinterpret_cast<char*>(instance) + offset;
}
inline const void* field(const Instance* instance, uint32 offset) noexcept {
    return reinterpret_cast<const char*>(instance) + offset;
}
uint8& null_flag(Instance* instance, const Meta_Property& property) noexcept;
uint8 null_flag(const Instance* instance, const Meta_Property& property) noexcept;
// The null flag of an array of references.
uint8& null_flag(Instance* instance, const Meta_Reference& reference) noexcept;
uint8 null_flag(const Instance* instance, const Meta_Reference& reference) noexcept;
inline Instance*& reference_field(Instance* instance, const Meta_Reference& reference) noexcept {
    return *static_cast<Instance**>(field(instance, reference.offset));
}
inline Instance* reference_field(const Instance* instance,
                                 const Meta_Reference& reference) noexcept {
    return *static_cast<Instance* const*>(field(instance, reference.offset));
}
inline Array<Instance*>& reference_array(Instance* instance,
                                         const Meta_Reference& reference) noexcept {
    return *static_cast<Array<Instance*>*>(field(instance, reference.offset));
}
inline const Array<Instance*>& reference_array(const Instance* instance,
                                               const Meta_Reference& reference) noexcept {
    return *static_cast<const Array<Instance*>*>(field(instance, reference.offset));
}

// Sets the null flag of each key property if `keys`, of each other property if `non_keys`.
void set_null_flags(Instance* instance, bool keys, bool non_keys, uint8 value) noexcept;

// Turns a property list into null flags: what the null-terminated list `names` has reads as wanted.
// A null list wants everything. Keys are left alone with `keep_keys`. -1 if a name is a method's.
int filter_properties(Instance* instance, const char* const* names, bool keep_keys);

// Gives the namespace to the instance and all that it reaches through references: to those without
// one, and with `force` to the others too.
void set_name_space_recursive(Instance* instance, const char* name_space, bool force);

// True if the keys of `a`'s class are equal in both, string keys to the letter. Classes may differ
// within one hierarchy.
bool key_eq(const Instance* a, const Instance* b) noexcept;

// Class name, point, and the keys as name=value with commas. -1 if a key is NULL or an array, or
// the class has none; `out` is then unchanged.
int instance_to_model_path(const Instance* instance, String& out);

// True if the class of `instance` is `C` or below it; null is of no class.
template <class C> bool is_a(const Instance* instance) noexcept {
    return instance != nullptr && is_subclass(&C::static_meta_class, class_of(instance));
}

template <class C> C* clone_of(const C* instance) {
    return static_cast<C*>(clone(instance));
}

// A scoped count on an instance. Construction takes over one count; a copy adds one.
template <class C = Instance> class Ref {
public:
    Ref() noexcept = default;
    explicit Ref(C* instance) noexcept : _instance(instance) {}
    Ref(const Ref& other) noexcept : _instance(other._instance) { ref(_instance); }
    Ref(Ref&& other) noexcept : _instance(std::exchange(other._instance, nullptr)) {}
    ~Ref() { unref(_instance); }
    Ref& operator=(Ref other) noexcept {
        std::swap(_instance, other._instance);
        return *this;
    }

    void reset(C* instance = nullptr) noexcept { unref(std::exchange(_instance, instance)); }
    // Hands the count to the caller.
    C* release() noexcept { return std::exchange(_instance, nullptr); }
    C* get() const noexcept { return _instance; }
    C* operator->() const noexcept { return _instance; }
    C& operator*() const noexcept { return *_instance; }
    explicit operator bool() const noexcept { return _instance != nullptr; }

private:
    C* _instance = nullptr;
};

} // namespace cimple

#endif
