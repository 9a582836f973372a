#include "runtime/array.h"

#include <bit>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace cimple {

namespace {

constexpr std::size_t min_capacity = 8;

template <class T> bool equal_objects(const void* a, const void* b) noexcept {
    return *static_cast<const T*>(a) == *static_cast<const T*>(b);
}

template <class T> void construct_object(void* at, const void* from) {
    ::new (at) T(*static_cast<const T*>(from));
}

template <class T> void destroy_object(void* at) noexcept {
    std::destroy_at(static_cast<T*>(at));
}

template <class T> constexpr Type_Traits plain() noexcept {
    return {sizeof(T), nullptr, nullptr, nullptr}; // NOLINT(bugprone-sizeof-expression)
}

// Reals compare as numbers: 0.0 equals -0.0, and no NaN equals itself.
template <class T> constexpr Type_Traits real() noexcept {
    return {sizeof(T), nullptr, nullptr, equal_objects<T>};
}

template <class T> constexpr Type_Traits handle() noexcept {
    return {sizeof(T), construct_object<T>, destroy_object<T>, equal_objects<T>};
}

// By type code, and last those of instances.
constexpr std::size_t instances_at = type_count;
constexpr Type_Traits all_traits[type_count + 1] = {
    plain<bool>(),   plain<uint8>(),  plain<sint8>(),   plain<uint16>(),    plain<sint16>(),
    plain<uint32>(), plain<sint32>(), plain<uint64>(),  plain<sint64>(),    real<real32>(),
    real<real64>(),  plain<char16>(), handle<String>(), handle<Datetime>(), plain<Instance*>(),
};

std::size_t capacity_for(std::size_t size) {
    if (size > std::numeric_limits<std::size_t>::max() / 64) {
        throw std::bad_alloc();
    }
    return size < min_capacity ? min_capacity : std::bit_ceil(size);
}

// `memcpy` for a count that may be 0, for which the standard one takes no null pointers.
void copy_bytes(void* to, const void* from, std::size_t count) noexcept {
    if (count != 0) {
        std::memcpy(to, from, count);
    }
}

} // namespace

const Type_Traits& traits_of(Type type) noexcept {
    return all_traits[type < type_count ? type : UINT8];
}

const Type_Traits& instance_traits() noexcept {
    return all_traits[instances_at];
}

constinit Array_Base::Rep Array_Base::empty_reps[type_count + 1] = {
    {&all_traits[0], 0, 0},  {&all_traits[1], 0, 0},  {&all_traits[2], 0, 0},
    {&all_traits[3], 0, 0},  {&all_traits[4], 0, 0},  {&all_traits[5], 0, 0},
    {&all_traits[6], 0, 0},  {&all_traits[7], 0, 0},  {&all_traits[8], 0, 0},
    {&all_traits[9], 0, 0},  {&all_traits[10], 0, 0}, {&all_traits[11], 0, 0},
    {&all_traits[12], 0, 0}, {&all_traits[13], 0, 0}, {&all_traits[instances_at], 0, 0},
};

Array_Base::Rep* Array_Base::make(const Type_Traits& traits, std::size_t capacity) {
    if (capacity == 0) {
        return &empty_reps[&traits - all_traits];
    }
    Rep* rep = static_cast<Rep*>(::operator new(sizeof(Rep) + capacity * traits.size));
    *rep = {&traits, 0, capacity};
    return rep;
}

void Array_Base::dispose(Rep* rep) noexcept {
    if (rep->capacity != 0) {
        ::operator delete(rep);
    }
}

Array_Base::Array_Base(const Type_Traits& traits) : _rep(make(traits, min_capacity)) {}

Array_Base::Array_Base(const Array_Base& other) : _rep(make(other.traits(), other.size())) {
    append_elements(other.data(), other.size());
}

Array_Base::~Array_Base() {
    if (_rep != nullptr) {
        clear();
        dispose(_rep);
    }
}

Array_Base& Array_Base::operator=(const Array_Base& other) {
    if (_rep != other._rep) {
        *this = Array_Base(other);
    }
    return *this;
}

void Array_Base::reserve(std::size_t capacity) {
    if (capacity <= _rep->capacity) {
        return;
    }
    // Elements are handles or plain bytes, so their bytes may move without a constructor.
    Rep* rep = make(traits(), capacity_for(capacity));
    rep->size = _rep->size;
    copy_bytes(rep->elements(), _rep->elements(), size() * traits().size);
    dispose(_rep);
    _rep = rep;
}

void Array_Base::insert_elements(std::size_t position, const void* elements, std::size_t count) {
    if (count == 0) {
        return;
    }
    if (count > std::numeric_limits<std::size_t>::max() - size()) {
        throw std::bad_alloc();
    }
    if (position > size()) {
        position = size();
    }
    reserve(size() + count);

    const Type_Traits& element = traits();
    char* to = static_cast<char*>(data()) + position * element.size;
    std::memmove(to + count * element.size, to, (size() - position) * element.size);
    if (element.construct == nullptr) {
        std::memcpy(to, elements, count * element.size);
    } else {
        const char* from = static_cast<const char*>(elements);
        for (std::size_t i = 0; i < count; ++i) {
            element.construct(to + i * element.size, from + i * element.size);
        }
    }
    _rep->size += count;
}

void Array_Base::remove(std::size_t position, std::size_t count) noexcept {
    if (position >= size()) {
        return;
    }
    if (count > size() - position) {
        count = size() - position;
    }
    const Type_Traits& element = traits();
    char* at = static_cast<char*>(data()) + position * element.size;
    if (element.destroy != nullptr) {
        for (std::size_t i = 0; i < count; ++i) {
            element.destroy(at + i * element.size);
        }
    }
    std::memmove(at, at + count * element.size, (size() - position - count) * element.size);
    _rep->size -= count;
}

bool Array_Base::equal(const Array_Base& other) const noexcept {
    const Type_Traits& element = traits();
    if (&element != &other.traits() || size() != other.size()) {
        return false;
    }
    if (element.equal == nullptr) {
        return std::memcmp(data(), other.data(), size() * element.size) == 0;
    }
    for (std::size_t i = 0; i < size(); ++i) {
        if (!element.equal(at(i), other.at(i))) {
            return false;
        }
    }
    return true;
}

long Array_Base::find_element(const void* element) const noexcept {
    const Type_Traits& type = traits();
    for (std::size_t i = 0; i < size(); ++i) {
        if (type.equal != nullptr ? type.equal(at(i), element)
                                  : std::memcmp(at(i), element, type.size) == 0) {
            return static_cast<long>(i);
        }
    }
    return -1;
}

} // namespace cimple
