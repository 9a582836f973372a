// `Datetime`: a CIM timestamp or interval. One pointer wide, shared by count, copied on write.
#ifndef TVR_RUNTIME_DATETIME_H
#define TVR_RUNTIME_DATETIME_H

#include "runtime/string.h"

namespace cimple {

// Threads: as `String`.
class Datetime {
public:
    // Bytes that `ascii` needs at least.
    static constexpr std::size_t ascii_size = 40;

    // A zero interval.
    Datetime();
    // A timestamp of `usec` microseconds since the epoch, `offset` minutes east of UTC.
    explicit Datetime(uint64 usec, sint32 offset = 0);
    Datetime(const Datetime& other) noexcept;
    ~Datetime();
    Datetime& operator=(const Datetime& other) noexcept;

    // The present time by the runtime's clock, with the host's offset from UTC. A clock that
    // fails gives a zero interval.
    static Datetime now();
    // An interval of `usec` microseconds.
    static Datetime interval(uint64 usec);

    // Takes the 25-character CIM form, an interval "ddddddddhhmmss.mmmmmm:000" or a timestamp
    // "yyyymmddhhmmss.mmmmmm+utc", whose fields are read as local time. False for anything else;
    // the object then stays as it was.
    bool set(const char* text);

    // Writes the text into `out`, at least `ascii_size` bytes: the CIM form, or with `prettify`
    // the form for people. A timestamp shows local fields and the stored offset.
    void ascii(char* out, bool prettify = false) const;
    String ascii(bool prettify = false) const;

    // Microseconds since the epoch, or of the interval.
    uint64 get_usec() const noexcept;
    // Minutes east of UTC.
    sint32 get_offset() const noexcept;
    bool is_timestamp() const noexcept;
    bool is_interval() const noexcept { return !is_timestamp(); }

    // Same microseconds, offset and kind.
    bool equal(const Datetime& other) const noexcept;
    friend bool operator==(const Datetime& a, const Datetime& b) noexcept { return a.equal(b); }

private:
    struct Rep {
        uint32 refs;
        uint64 usec;
        sint32 offset;
        uint32 is_timestamp;
    };
    Datetime(uint64 usec, sint32 offset, bool is_timestamp);

    Rep* _rep;
};

static_assert(sizeof(Datetime) == sizeof(void*));

} // namespace cimple

#endif
