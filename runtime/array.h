// `Array<T>`: the growing array of every array property. One pointer wide; owns its elements.
#ifndef TVR_RUNTIME_ARRAY_H
#define TVR_RUNTIME_ARRAY_H

#include "runtime/datetime.h"
#include "runtime/string.h"
#include "runtime/type.h"

#include <initializer_list>

namespace cimple {

struct Instance;

// How elements of one type are handled. A null `construct` means a byte copy, a null `destroy`
// nothing to do, a null `equal` a byte compare.
struct Type_Traits {
    std::size_t size;
    void (*construct)(void* at, const void* from);
    void (*destroy)(void* at) noexcept;
    bool (*equal)(const void* a, const void* b) noexcept;
};

// Traits of the elements of a property array, by type code.
const Type_Traits& traits_of(Type type) noexcept;
// Traits of `Instance*`: plain pointers, whose counts the array's owner keeps.
const Type_Traits& instance_traits() noexcept;

// The form without a type, through which metadata-driven code works on any array. One object is
// used by one thread at a time. Growth that fails throws std::bad_alloc with the array unchanged.
// A new array holds 8 elements, a copy as many as its source has; growth is to the least power of
// two from 8 up that holds the new size. An array that was moved from may only be assigned to or
// end.
class Array_Base {
public:
    // The traits are those of `traits_of` or `instance_traits`.
    explicit Array_Base(const Type_Traits& traits);
    Array_Base(const Array_Base& other);
    Array_Base(Array_Base&& other) noexcept : _rep(other._rep) { other._rep = nullptr; }
    ~Array_Base();
    Array_Base& operator=(const Array_Base& other);
    Array_Base& operator=(Array_Base&& other) noexcept {
        Rep* rep = _rep;
        _rep = other._rep;
        other._rep = rep;
        return *this;
    }

    std::size_t size() const noexcept { return _rep->size; }
    std::size_t capacity() const noexcept { return _rep->capacity; }
    bool empty() const noexcept { return _rep->size == 0; }
    const Type_Traits& traits() const noexcept { return *_rep->traits; }

    void* data() noexcept { return _rep->elements(); }
    const void* data() const noexcept { return _rep->elements(); }
    const void* at(std::size_t position) const noexcept {
        return static_cast<const char*>(data()) + position * _rep->traits->size;
    }

    void append_elements(const void* elements, std::size_t count) {
        insert_elements(size(), elements, count);
    }
    // A `position` behind the end means the end. `elements` may not lie in this array.
    void insert_elements(std::size_t position, const void* elements, std::size_t count);
    // Elements from `position` on; what would lie behind the end is left out. Keeps the capacity.
    void remove(std::size_t position, std::size_t count = 1) noexcept;
    void clear() noexcept { remove(0, size()); }
    void reserve(std::size_t capacity);

    bool equal(const Array_Base& other) const noexcept;
    // First position whose element equals the one at `element`, or -1.
    long find_element(const void* element) const noexcept;

private:
    struct Rep {
        const Type_Traits* traits;
        uint64 size;
        uint64 capacity;
        void* elements() noexcept { return this + 1; }
        const void* elements() const noexcept { return this + 1; }
    };
    // One static block of an empty array a type, which alone has capacity 0 and is never freed: the
    // copy of an empty array, of which every clone of an instance makes many, costs nothing.
    static Rep empty_reps[type_count + 1];

    // A block with room for `capacity` elements.
    static Rep* make(const Type_Traits& traits, std::size_t capacity);
    static void dispose(Rep* rep) noexcept;

    Rep* _rep;
};

template <class T> const Type_Traits& element_traits() noexcept;
template <> inline const Type_Traits& element_traits<bool>() noexcept {
    return traits_of(BOOLEAN);
}
template <> inline const Type_Traits& element_traits<uint8>() noexcept {
    return traits_of(UINT8);
}
template <> inline const Type_Traits& element_traits<sint8>() noexcept {
    return traits_of(SINT8);
}
template <> inline const Type_Traits& element_traits<uint16>() noexcept {
    return traits_of(UINT16);
}
template <> inline const Type_Traits& element_traits<sint16>() noexcept {
    return traits_of(SINT16);
}
template <> inline const Type_Traits& element_traits<uint32>() noexcept {
    return traits_of(UINT32);
}
template <> inline const Type_Traits& element_traits<sint32>() noexcept {
    return traits_of(SINT32);
}
template <> inline const Type_Traits& element_traits<uint64>() noexcept {
    return traits_of(UINT64);
}
template <> inline const Type_Traits& element_traits<sint64>() noexcept {
    return traits_of(SINT64);
}
template <> inline const Type_Traits& element_traits<real32>() noexcept {
    return traits_of(REAL32);
}
template <> inline const Type_Traits& element_traits<real64>() noexcept {
    return traits_of(REAL64);
}
template <> inline const Type_Traits& element_traits<char16>() noexcept {
    return traits_of(CHAR16);
}
template <> inline const Type_Traits& element_traits<String>() noexcept {
    return traits_of(STRING);
}
template <> inline const Type_Traits& element_traits<Datetime>() noexcept {
    return traits_of(DATETIME);
}
template <> inline const Type_Traits& element_traits<Instance*>() noexcept {
    return instance_traits();
}

template <class T> class Array : public Array_Base {
public:
    Array() : Array_Base(element_traits<T>()) {}
    Array(std::initializer_list<T> elements) : Array() {
        append_elements(elements.begin(), elements.size());
    }

    void append(const T& element) {
        T copy(element); // the element may lie in this array
        append_elements(&copy, 1);
    }
    void append(const T* elements, std::size_t count) { append_elements(elements, count); }
    void insert(std::size_t position, const T* elements, std::size_t count) {
        insert_elements(position, elements, count);
    }
    long find(const T& element) const noexcept { return find_element(&element); }

    T* begin() noexcept { return static_cast<T*>(data()); }
    T* end() noexcept { return begin() + size(); }
    const T* begin() const noexcept { return static_cast<const T*>(data()); }
    const T* end() const noexcept { return begin() + size(); }
    T& operator[](std::size_t position) noexcept { return begin()[position]; }
    const T& operator[](std::size_t position) const noexcept { return begin()[position]; }

    friend bool operator==(const Array& a, const Array& b) noexcept { return a.equal(b); }
};

static_assert(sizeof(Array<uint32>) == sizeof(void*));

} // namespace cimple

#endif
