#include "host/cim_value.h"

#include <chrono>
#include <cstdio>

namespace tvrhost {

namespace {

constexpr std::size_t length = 25;

bool is_field(std::string_view text) {
    return text.find_first_not_of("0123456789*") == std::string_view::npos;
}

std::uint64_t field(std::string_view text, std::size_t from, std::size_t size) {
    std::uint64_t number = 0;
    for (const char c : text.substr(from, size)) {
        number = number * 10 + (c == '*' ? 0 : static_cast<std::uint64_t>(c - '0'));
    }
    return number;
}

constexpr std::uint64_t second = 1000000;
constexpr std::uint64_t day = 86400 * second;

} // namespace

Cim_Datetime::Cim_Datetime() : _text("00000000000000.000000:000") {}

Cim_Datetime::Cim_Datetime(std::string_view text) : _text(text) {
    const char* const forms = "datetime is \"yyyymmddhhmmss.mmmmmmsutc\" or "
                              "\"ddddddddhhmmss.mmmmmm:000\", not \"";
    const bool form = text.size() == length && text[14] == '.' &&
                      (text[21] == ':' || text[21] == '+' || text[21] == '-') &&
                      is_field(text.substr(0, 14)) && is_field(text.substr(15, 6)) &&
                      is_field(text.substr(22, 3));
    if (!form) {
        throw Value_Error(forms + std::string(text) + "\"");
    }
    const bool wild = text.find('*') != std::string_view::npos;
    const bool interval = text[21] == ':';
    const bool range = field(text, 8, 2) < 24 && field(text, 10, 2) < 60 &&
                       field(text, 12, 2) < 61 && (!interval || text.substr(22) == "000") &&
                       (interval || wild ||
                        (field(text, 4, 2) >= 1 && field(text, 4, 2) <= 12 &&
                         field(text, 6, 2) >= 1 && field(text, 6, 2) <= 31));
    if (!range) {
        throw Value_Error(forms + std::string(text) + "\"");
    }
}

Cim_Datetime Cim_Datetime::from_microseconds(std::uint64_t microseconds, bool interval) {
    const std::uint64_t days = microseconds / day;
    const std::uint64_t in_day = microseconds % day / second;
    const auto clock = [&](char* to, std::size_t size, const char* end) {
        std::snprintf(to, size, "%02u%02u%02u.%06u%s", static_cast<unsigned>(in_day / 3600),
                      static_cast<unsigned>(in_day / 60 % 60), static_cast<unsigned>(in_day % 60),
                      static_cast<unsigned>(microseconds % second), end);
    };
    char time[64];
    char date[64];
    if (interval) {
        std::snprintf(date, sizeof date, "%08llu",
                      static_cast<unsigned long long>(days % 100000000));
        clock(time, sizeof time, ":000");
    } else {
        const std::chrono::year_month_day calendar{
            std::chrono::sys_days{std::chrono::days{static_cast<int>(days % 2932897)}}};
        std::snprintf(date, sizeof date, "%04d%02u%02u", static_cast<int>(calendar.year()),
                      static_cast<unsigned>(calendar.month()),
                      static_cast<unsigned>(calendar.day()));
        clock(time, sizeof time, "+000");
    }
    return Cim_Datetime(std::string(date) + time);
}

Cim_Datetime Cim_Datetime::now() {
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return from_microseconds(
        static_cast<std::uint64_t>(
            std::chrono::duration_cast<std::chrono::microseconds>(since).count()),
        false);
}

std::uint64_t Cim_Datetime::microseconds() const noexcept {
    const std::uint64_t in_day =
        (field(_text, 8, 2) * 3600 + field(_text, 10, 2) * 60 + field(_text, 12, 2)) * second +
        field(_text, 15, 6);
    if (is_interval()) {
        return field(_text, 0, 8) * day + in_day;
    }
    const unsigned month = static_cast<unsigned>(field(_text, 4, 2));
    const unsigned date = static_cast<unsigned>(field(_text, 6, 2));
    const std::chrono::year_month_day calendar{
        std::chrono::year{static_cast<int>(field(_text, 0, 4))},
        std::chrono::month{month == 0 ? 1 : month}, std::chrono::day{date == 0 ? 1 : date}};
    const std::int64_t days = std::chrono::sys_days{calendar}.time_since_epoch().count();
    std::int64_t offset = static_cast<std::int64_t>(field(_text, 22, 3)) * 60;
    if (_text[21] == '-') {
        offset = -offset;
    }
    const std::int64_t total = days * static_cast<std::int64_t>(day) +
                               static_cast<std::int64_t>(in_day) -
                               offset * static_cast<std::int64_t>(second);
    return total < 0 ? 0 : static_cast<std::uint64_t>(total);
}

} // namespace tvrhost
