#include <zone.h>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace vnlog;

TEST(Zone, offsetsAreReadInTheirUsualForms)
{
    const struct
    {
        char const* text;
        long seconds;
    } table[] = {{"UTC", 0},        {"Z", 0},         {"+0", 0},          {"+1", 3600},
                 {"+05:30", 19800}, {"+0530", 19800}, {"-08:00", -28800}, {"-0330", -12600}};
    for (auto const& row : table)
        EXPECT_EQ(Zone::parse(row.text).getOffset(1000000000), row.seconds) << row.text;
    for (char const* text :
         {"+", "-", "+x", "+05:60", "+25", "+123456", "+-1", "no zone", "", "../UTC", "/etc/passwd"})
        EXPECT_THROW(Zone::parse(text), std::runtime_error) << text;
}

TEST(Zone, datesAndSecondsMatchOnAllDaysOfTwoCenturies)
{
    const Zone zone = Zone::parse("-03:30");
    // The calendar's own rules, one day after the other.
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::time_t second = -2208988800 + 12600;  // 1900-01-01 there
    for (int year = 1900; year < 2100; ++year)
        for (int month = 1; month <= 12; ++month) {
            const bool isLeap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
            const int length = lengths[month - 1] + (month == 2 && isLeap ? 1 : 0);
            for (int day = 1; day <= length; ++day, second += 86400) {
                ASSERT_EQ(zone.getDate(second), (Civil{year, month, day, 0, 0, 0}));
                ASSERT_EQ(zone.getDate(second + 86399), (Civil{year, month, day, 23, 59, 59}));
                ASSERT_EQ(zone.find({year, month, day, 0, 0, 0}), second);
            }
            ASSERT_FALSE(zone.find({year, month, length + 1, 0, 0, 0}));
        }
}

#ifndef _WIN32
TEST(Zone, aNamedZoneHasItsSummerTime)
{
    const Zone berlin = Zone::parse("Europe/Berlin");
    // 2026-03-29 01:00 UTC clocks go from two to three, 2026-10-25 01:00 UTC from three to two.
    EXPECT_EQ(berlin.getOffset(1774745999), 3600);
    EXPECT_EQ(berlin.getOffset(1774746000), 7200);
    EXPECT_EQ(berlin.getOffset(1792889999), 7200);
    EXPECT_EQ(berlin.getOffset(1792890000), 3600);
    EXPECT_EQ(berlin.getDate(1774746000), (Civil{2026, 3, 29, 3, 0, 0}));
    EXPECT_EQ(berlin.find({2026, 3, 29, 3, 0, 0}), 1774746000);
}

TEST(Zone, theMachinesOwnZoneComesBackBehindAnother)
{
    const std::time_t time = 86400;
    const Zone own = Zone::getLocal();
    const long offset = own.getOffset(time);
    const Zone kiritimati = Zone::parse("Pacific/Kiritimati");
    // Nobody's own: it was 10:40 hours behind.
    EXPECT_EQ(kiritimati.getOffset(time), -38400);
    EXPECT_EQ(Zone::getLocal().getOffset(time), offset);
    EXPECT_EQ(own.find({1970, 1, 2, 0, 0, 0}), 86400 - offset);
}
#endif
