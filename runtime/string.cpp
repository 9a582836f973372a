#include "runtime/string.h"

#include <bit>
#include <cstring>
#include <new>

namespace cimple {

namespace {

constexpr std::size_t min_capacity = 32;
constexpr std::size_t max_capacity = std::size_t{1} << 31;

std::size_t length_of(const char* text) noexcept {
    return text != nullptr ? std::strlen(text) : 0;
}

} // namespace

constinit String::Rep String::empty_rep = {1, 0, 0, {}};

String::Rep* String::make(std::size_t size) {
    if (size > max_capacity) {
        throw std::bad_alloc();
    }
    const std::size_t cap = size < min_capacity ? min_capacity : std::bit_ceil(size);
    Rep* rep = static_cast<Rep*>(::operator new(offsetof(Rep, data) + cap + 1));
    rep->refs = 1;
    rep->size = 0;
    rep->cap = static_cast<uint32>(cap);
    return rep;
}

String::Rep* String::copy(const char* text, std::size_t size) {
    if (size == 0) {
        return &empty_rep;
    }
    Rep* rep = make(size);
    char* data = rep->data;
    std::memcpy(data, text, size);
    data[size] = '\0';
    rep->size = static_cast<uint32>(size);
    return rep;
}

void String::dispose(Rep* rep) noexcept {
    ::operator delete(rep);
}

void String::set_size(std::size_t size) noexcept {
    char* data = _rep->data;
    data[size] = '\0';
    _rep->size = static_cast<uint32>(size);
}

String::String(const char* text) : _rep(copy(text, length_of(text))) {}

String::String(const char* text, std::size_t size) : _rep(copy(text, size)) {}

void String::assign(const char* text) {
    assign(text, length_of(text));
}

void String::assign(const char* text, std::size_t size) {
    if (size == 0) {
        clear();
    } else if (writable() && size <= _rep->cap) {
        std::memmove(_rep->data, text, size);
        set_size(size);
    } else {
        replace(copy(text, size));
    }
}

void String::append(char c) {
    const std::size_t old_size = size();
    if (!writable() || old_size == _rep->cap) {
        Rep* rep = make(2 * static_cast<std::size_t>(_rep->cap));
        std::memcpy(rep->data, _rep->data, old_size);
        replace(rep);
    }
    char* data = _rep->data;
    data[old_size] = c;
    set_size(old_size + 1);
}

void String::append(const char* text) {
    append(text, length_of(text));
}

void String::append(const char* text, std::size_t size) {
    if (size == 0) {
        return;
    }
    if (size > max_capacity) {
        throw std::bad_alloc();
    }
    const std::size_t old_size = _rep->size;
    if (writable() && old_size + size <= _rep->cap) {
        std::memmove(_rep->data + old_size, text, size);
    } else {
        Rep* rep = make(old_size + size);
        std::memcpy(rep->data, _rep->data, old_size);
        std::memcpy(rep->data + old_size, text, size);
        replace(rep);
    }
    set_size(old_size + size);
}

bool String::equali(const char* text) const noexcept {
    return length_of(text) == size() && (empty() || eqi(c_str(), text));
}

long String::find(char c, std::size_t from) const noexcept {
    const std::size_t at = view().find(c, from);
    return at == std::string_view::npos ? -1 : static_cast<long>(at);
}

long String::find(const char* text, std::size_t from) const noexcept {
    const std::size_t at = view().find(std::string_view(text, length_of(text)), from);
    return at == std::string_view::npos ? -1 : static_cast<long>(at);
}

} // namespace cimple
