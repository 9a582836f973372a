#include "runtime/datetime.h"

#include "runtime/clock.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace cimple {

namespace {

constexpr uint64 usec_per_second = 1'000'000;
constexpr std::size_t text_length = 25;
constexpr std::size_t point_at = 14;
constexpr std::size_t sign_at = 21;

// Reads a field of fixed width, digits only.
bool digits(const char* text, std::size_t at, std::size_t width, uint32& value) noexcept {
    value = 0;
    for (std::size_t i = at; i < at + width; ++i) {
        if (text[i] < '0' || text[i] > '9') {
            return false;
        }
        value = value * 10 + static_cast<uint32>(text[i] - '0');
    }
    return true;
}

struct Moment {
    uint64 usec = 0;
    sint32 offset = 0;
    bool is_timestamp = false;
};

bool parse_interval(const char* text, Moment& moment) noexcept {
    uint32 days = 0;
    uint32 hours = 0;
    uint32 minutes = 0;
    uint32 seconds = 0;
    uint32 usec = 0;
    if (!digits(text, 0, 8, days) || !digits(text, 8, 2, hours) || !digits(text, 10, 2, minutes) ||
        !digits(text, 12, 2, seconds) || !digits(text, 15, 6, usec) ||
        std::strcmp(text + sign_at + 1, "000") != 0) {
        return false;
    }
    const uint64 total = ((uint64{days} * 24 + hours) * 60 + minutes) * 60 + seconds;
    moment = {total * usec_per_second + usec, 0, false};
    return true;
}

bool parse_timestamp(const char* text, Moment& moment) noexcept {
    uint32 year = 0;
    uint32 month = 0;
    uint32 day = 0;
    uint32 hours = 0;
    uint32 minutes = 0;
    uint32 seconds = 0;
    uint32 usec = 0;
    uint32 offset = 0;
    if (!digits(text, 0, 4, year) || !digits(text, 4, 2, month) || !digits(text, 6, 2, day) ||
        !digits(text, 8, 2, hours) || !digits(text, 10, 2, minutes) ||
        !digits(text, 12, 2, seconds) || !digits(text, 15, 6, usec) ||
        !digits(text, sign_at + 1, 3, offset)) {
        return false;
    }
    struct tm fields {};
    fields.tm_year = static_cast<int>(year) - 1900;
    fields.tm_mon = static_cast<int>(month) - 1;
    fields.tm_mday = static_cast<int>(day);
    fields.tm_hour = static_cast<int>(hours);
    fields.tm_min = static_cast<int>(minutes);
    fields.tm_sec = static_cast<int>(seconds);
    fields.tm_isdst = -1;
    const sint64 total = std::mktime(&fields);
    const sint32 east = static_cast<sint32>(offset);
    moment = {static_cast<uint64>(total) * usec_per_second + usec,
              text[sign_at] == '-' ? -east : east, true};
    return true;
}

void write_interval(char* out, uint64 usec, bool prettify) noexcept {
    const uint64 total = usec / usec_per_second;
    std::snprintf(out, Datetime::ascii_size,
                  prettify ? "%08u %02u %02u %02u.%06u:000" : "%08u%02u%02u%02u.%06u:000",
                  static_cast<uint32>(total / 86400), static_cast<uint32>(total / 3600 % 24),
                  static_cast<uint32>(total / 60 % 60), static_cast<uint32>(total % 60),
                  static_cast<uint32>(usec % usec_per_second));
}

void write_timestamp(char* out, uint64 usec, sint32 offset, bool prettify) noexcept {
    // Times before the epoch wrap; read as signed they give their fields back.
    const sint64 second = static_cast<sint64>(usec_per_second);
    const sint64 signed_usec = static_cast<sint64>(usec);
    sint64 rest = signed_usec % second;
    time_t total = signed_usec / second;
    if (rest < 0) {
        rest += second;
        --total;
    }
    struct tm fields {};
    ::localtime_r(&total, &fields);
    const sint64 minutes = offset < 0 ? -sint64{offset} : sint64{offset};
    std::snprintf(out, Datetime::ascii_size,
                  prettify ? "%04d/%02d/%02d %02d:%02d:%02d.%06d%c%03d"
                           : "%04d%02d%02d%02d%02d%02d.%06d%c%03d",
                  fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
                  fields.tm_min, fields.tm_sec, static_cast<int>(rest), offset < 0 ? '-' : '+',
                  static_cast<int>(minutes));
}

} // namespace

Datetime::Datetime(uint64 usec, sint32 offset, bool is_timestamp)
    : _rep(new Rep{1, usec, offset, is_timestamp ? 1u : 0u}) {}

Datetime::Datetime() : Datetime(0, 0, false) {}

Datetime::Datetime(uint64 usec, sint32 offset) : Datetime(usec, offset, true) {}

Datetime::Datetime(const Datetime& other) noexcept : _rep(other._rep) {
    std::atomic_ref<uint32>(_rep->refs).fetch_add(1, std::memory_order_relaxed);
}

Datetime::~Datetime() {
    if (std::atomic_ref<uint32>(_rep->refs).fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete _rep;
    }
}

Datetime& Datetime::operator=(const Datetime& other) noexcept {
    Datetime copy(other);
    Rep* rep = _rep;
    _rep = copy._rep;
    copy._rep = rep;
    return *this;
}

Datetime Datetime::now() {
    uint64 usec = 0;
    sint32 offset = 0;
    return Clock::get().now(usec, offset) ? Datetime(usec, offset, true) : Datetime();
}

Datetime Datetime::interval(uint64 usec) {
    return Datetime(usec, 0, false);
}

bool Datetime::set(const char* text) {
    if (text == nullptr || ::strnlen(text, text_length + 1) != text_length ||
        text[point_at] != '.') {
        return false;
    }
    Moment moment;
    switch (text[sign_at]) {
    case ':':
        if (!parse_interval(text, moment)) {
            return false;
        }
        break;
    case '+':
    case '-':
        if (!parse_timestamp(text, moment)) {
            return false;
        }
        break;
    default:
        return false;
    }
    *this = Datetime(moment.usec, moment.offset, moment.is_timestamp);
    return true;
}

void Datetime::ascii(char* out, bool prettify) const {
    if (is_timestamp()) {
        write_timestamp(out, _rep->usec, _rep->offset, prettify);
    } else {
        write_interval(out, _rep->usec, prettify);
    }
}

String Datetime::ascii(bool prettify) const {
    char text[ascii_size];
    ascii(text, prettify);
    return String(text);
}

uint64 Datetime::get_usec() const noexcept {
    return _rep->usec;
}

sint32 Datetime::get_offset() const noexcept {
    return _rep->offset;
}

bool Datetime::is_timestamp() const noexcept {
    return _rep->is_timestamp != 0;
}

bool Datetime::equal(const Datetime& other) const noexcept {
    return _rep->usec == other._rep->usec && _rep->offset == other._rep->offset &&
           is_timestamp() == other.is_timestamp();
}

} // namespace cimple
