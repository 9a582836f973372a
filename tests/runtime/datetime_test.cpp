#include "runtime/datetime.h"

#include "tests/common/session.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <optional>

namespace cimple {
namespace {

// Puts the process into a time zone, as TZ names it, until its end.
class In_Zone {
public:
    explicit In_Zone(const char* zone) { set(zone); }
    ~In_Zone() { set("UTC0"); }

private:
    static void set(const char* zone) {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
};

class Datetimes : public testing::Test {
protected:
    Datetimes() {
        // What a text is read as, in the zone that was named last: microseconds and the two forms.
        session.on("zone", [this](const auto& words) { _zone.emplace(words.at(0).c_str()); });
        session.on("read", [](const auto& words, std::ostream& answer) {
            const Datetime before(uint64{42}, 7);
            Datetime datetime(before);
            if (!datetime.set(words.at(0).c_str())) {
                answer << (datetime == before ? "refused\n" : "refused, and changed\n");
                return;
            }
            EXPECT_FALSE(datetime.is_interval() && datetime == Datetime(datetime.get_usec()));
            tell(datetime, answer);
        });
        session.on("interval", [](const auto& words, std::ostream& answer) {
            tell(Datetime::interval(std::stoull(words.at(0))), answer);
        });
        session.on("time", [](const auto& words, std::ostream& answer) { // and its offset
            tell(Datetime(std::stoull(words.at(0)), std::stoi(words.at(1))), answer);
        });
    }
    static void tell(const Datetime& datetime, std::ostream& answer) {
        answer << datetime.get_usec() << " | " << datetime.ascii().c_str() << " | "
               << datetime.ascii(true).c_str() << '\n';
    }

    Text_Session session;

private:
    std::optional<In_Zone> _zone;
};

TVR_SESSIONS(Datetimes, "datetime.txt");

TEST(Datetime, no_value_runs_over_the_text_buffer) {
    char text[Datetime::ascii_size + 4];
    std::fill(std::begin(text), std::end(text), '#');
    for (const uint64 usec : {uint64{0}, UINT64_MAX / 2, UINT64_MAX / 2 + 1, UINT64_MAX}) {
        Datetime(usec, INT32_MIN).ascii(text, true);
        Datetime(usec, INT32_MAX).ascii(text, true);
        Datetime::interval(usec).ascii(text, true);
        EXPECT_EQ(text[Datetime::ascii_size], '#');
    }
}

} // namespace
} // namespace cimple
