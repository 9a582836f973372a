// `String`: the text type of every string property. One pointer wide, shared by count, copied on
// write.
#ifndef TVR_RUNTIME_STRING_H
#define TVR_RUNTIME_STRING_H

#include "runtime/type.h"

#include <array>
#include <atomic>
#include <string>
#include <string_view>
#include <strings.h>

namespace cimple {

// Folds ASCII capitals to small letters and leaves every other byte as it is.
inline constexpr std::array<unsigned char, 256> ascii_fold = [] {
    std::array<unsigned char, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = static_cast<unsigned char>(i >= 'A' && i <= 'Z' ? i + ('a' - 'A') : i);
    }
    return table;
}();

// Compares two NUL-terminated names without regard to the case of ASCII letters. The first
// characters are compared through a table before strcasecmp is called, since this test is in the
// path of every metadata lookup. Neither may be null.
inline bool eqi(const char* a, const char* b) noexcept {
    return ascii_fold[static_cast<unsigned char>(*a)] ==
               ascii_fold[static_cast<unsigned char>(*b)] &&
           ::strcasecmp(a, b) == 0;
}

// A handle on a counted block. Copying shares the block; a write to a shared block makes a new one.
// Counts are atomic, so two threads may hold the same text; one `String` object belongs to one
// thread at a time. All operations but those that may allocate are noexcept; allocation failure,
// and a text longer than 2^31 bytes, throws std::bad_alloc and leaves the text as it was. A null
// pointer stands for the empty text.
//
// A block's capacity is a power of two and at least 32. Every empty text is the one static block,
// which holds no capacity, is never counted and never freed.
class String {
public:
    String() noexcept : _rep(&empty_rep) {}
    String(const char* text);
    String(const char* text, std::size_t size);
    String(std::string_view text) : String(text.data(), text.size()) {}
    String(const std::string& text) : String(text.data(), text.size()) {}
    String(const String& other) noexcept : _rep(other._rep) { share(_rep); }
    String(String&& other) noexcept : _rep(other._rep) { other._rep = &empty_rep; }
    ~String() { drop(_rep); }

    String& operator=(const String& other) noexcept {
        if (this != &other) {
            share(other._rep);
            drop(_rep);
            _rep = other._rep;
        }
        return *this;
    }
    String& operator=(String&& other) noexcept {
        Rep* rep = _rep;
        _rep = other._rep;
        other._rep = rep;
        return *this;
    }
    String& operator=(const char* text) {
        assign(text);
        return *this;
    }
    String& operator=(std::string_view text) {
        assign(text.data(), text.size());
        return *this;
    }
    String& operator=(const std::string& text) {
        assign(text.data(), text.size());
        return *this;
    }

    // Replaces the text; in place if the block is not shared and large enough. The new text may lie
    // in this one.
    void assign(const char* text);
    void assign(const char* text, std::size_t size);

    // The text may lie in this one. A full or shared block gives way to one of twice its capacity
    // for a character, of the least capacity that holds the result for a text.
    void append(char c);
    void append(const char* text);
    void append(const char* text, std::size_t size);

    // Always NUL-terminated; valid until the next write or the end of the handle.
    const char* c_str() const noexcept { return _rep->data; }
    std::size_t size() const noexcept { return _rep->size; }
    std::size_t capacity() const noexcept { return _rep->cap; }
    bool empty() const noexcept { return _rep->size == 0; }
    std::string_view view() const noexcept { return {_rep->data, _rep->size}; }
    operator std::string_view() const noexcept { return view(); }

    void clear() noexcept {
        drop(_rep);
        _rep = &empty_rep;
    }

    bool equal(const String& other) const noexcept { return view() == other.view(); }
    bool equal(const char* text) const noexcept {
        return view() == (text != nullptr ? std::string_view(text) : std::string_view());
    }
    // Whole texts without regard to case.
    bool equali(const char* text) const noexcept;

    // Position of the first match at or behind `from`, or -1.
    long find(char c, std::size_t from = 0) const noexcept;
    long find(const char* text, std::size_t from = 0) const noexcept;

    // True if both handles share one block.
    bool same_block(const String& other) const noexcept { return _rep == other._rep; }

    friend bool operator==(const String& a, const String& b) noexcept { return a.equal(b); }
    friend bool operator==(const String& a, const char* b) noexcept { return a.equal(b); }
    friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }
    friend bool operator==(const String& a, const std::string& b) noexcept { return a.view() == b; }

private:
    // Header of a block. `cap` and `size` leave out the terminator; only the one static block of
    // the empty text has `cap` 0: it is never counted and never freed.
    struct Rep {
        uint32 refs;
        uint32 size;
        uint32 cap;
        char data[4];
    };

    static Rep empty_rep;

    // A block of count 1 with room for `size` characters; its text is not yet set.
    static Rep* make(std::size_t size);
    static Rep* copy(const char* text, std::size_t size);
    static void dispose(Rep* rep) noexcept;
    static void share(Rep* rep) noexcept {
        if (rep->cap != 0) {
            std::atomic_ref<uint32>(rep->refs).fetch_add(1, std::memory_order_relaxed);
        }
    }
    static void drop(Rep* rep) noexcept {
        if (rep->cap != 0 &&
            std::atomic_ref<uint32>(rep->refs).fetch_sub(1, std::memory_order_acq_rel) == 1) {
            dispose(rep);
        }
    }
    // True if the text may be changed in place.
    bool writable() const noexcept {
        return _rep->cap != 0 &&
               std::atomic_ref<uint32>(_rep->refs).load(std::memory_order_acquire) == 1;
    }
    void set_size(std::size_t size) noexcept;
    void replace(Rep* rep) noexcept {
        drop(_rep);
        _rep = rep;
    }

    Rep* _rep;
};

static_assert(sizeof(String) == sizeof(void*));

} // namespace cimple

#endif
