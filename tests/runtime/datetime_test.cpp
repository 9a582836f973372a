#include "runtime/datetime.h"

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

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

Datetime parsed(const char* text) {
    Datetime datetime;
    EXPECT_TRUE(datetime.set(text)) << text;
    return datetime;
}

TEST(Datetime, intervals_keep_every_part) {
    const Datetime interval = parsed("00000001020304.000005:000");
    EXPECT_FALSE(interval == Datetime(interval.get_usec())) << "the kind counts";
    EXPECT_EQ(interval.get_usec(), ((24 + 2) * 3600 + 3 * 60 + 4) * uint64{1000000} + 5);
    EXPECT_EQ(interval.ascii(), "00000001020304.000005:000");
    EXPECT_EQ(interval.ascii(true), "00000001 02 03 04.000005:000");

    const char* longest = "99999999235959.999999:000";
    EXPECT_EQ(parsed(longest).ascii(), longest);
    EXPECT_EQ(Datetime::interval(UINT64_MAX).ascii(), "213503982080149.551615:000")
        << "more days than the field has digits";
}

TEST(Datetime, timestamps_are_local_fields_beside_the_stored_offset) {
    const In_Zone zone("EST5");
    const Datetime noon = parsed("20240101120000.000000+060");
    EXPECT_EQ(noon.get_usec(), uint64{1704128400} * 1000000) << "12:00 at the host's zone";
    EXPECT_EQ(noon.ascii(), "20240101120000.000000+060");
    EXPECT_EQ(noon.ascii(true), "2024/01/01 12:00:00.000000+060");
    EXPECT_EQ(Datetime(0, -300).ascii(), "19691231190000.000000-300");
    EXPECT_EQ(parsed("20240630235959.999999-999").ascii(), "20240630235959.999999-999");
}

TEST(Datetime, summer_time_and_times_before_the_epoch_keep_their_fields) {
    const In_Zone summer("EST5EDT");
    EXPECT_EQ(parsed("20240701120000.000000+000").get_usec(), uint64{1719849600} * 1000000);
    EXPECT_EQ(parsed("20240701120000.000000+000").ascii(), "20240701120000.000000+000");
    const In_Zone zone("UTC0");
    for (const char* text : {"19691231235959.999999+000", "19691231235959.000000+000",
                             "19000101000000.000001+000", "00000101000000.000000+000"}) {
        EXPECT_EQ(parsed(text).ascii(), text);
    }
}

TEST(Datetime, other_texts_are_refused_and_change_nothing) {
    const Datetime before(uint64{42}, 7);
    for (const char* text :
         {"", "2024", "20240101120000.000000+06", "20240101120000.000000+0600",
          "20240101120000.000000 060", "20240101120000.00000a+060", "2024010112000 .000000+060",
          "-0240101120000.000000+060", "20240101120000,000000+060", "20240101120000.000000++60",
          "00000001020304.000005:001", "0000000102030a.000005:000", "00000001020304:000005:000",
          "********120000.000000+060"}) {
        Datetime datetime(before);
        EXPECT_FALSE(datetime.set(text)) << text;
        EXPECT_EQ(datetime, before) << text;
    }
}

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
