// The search for the next time against the question asked of every second.
#include "workbench/model/ScheduleSearch.h"

#include <gtest/gtest.h>

#include "support/zone_scope.h"

namespace kalvex::workbench {
namespace {

using support::Gmt;

void ExpectEverySecond(const char* zone, std::int64_t from, std::int64_t last) {
    const support::ZoneScope scope(zone);
    for (const char* const text :
         {"*/17 */13 * * * *", "0 30 2 * * *", "59 59 1-3 * * *", "0 0 0 * * 0", "5 15 2 31 * *",
          "0 0 0 1 1 *", "0 45 1 * 4,10 Sun", "30 * 2 * * *"}) {
        operands::ScheduleEntry entry;
        ASSERT_TRUE(operands::ReadScheduleEntry(text, entry));
        std::optional<std::int64_t> next = FindScheduleTime(entry, from, last);
        for (std::int64_t time = from; time <= last; ++time) {
            const bool found = next == time;
            ASSERT_EQ(found, operands::FitsSchedule(entry, time)) << zone << text << time;
            if (found) next = FindScheduleTime(entry, time + 1, last);
        }
        EXPECT_EQ(next, std::nullopt) << text;
    }
}

TEST(ScheduleSearchTest, NothingIsLeftOutWhereTheClocksChange) {
    ExpectEverySecond("Europe/Warsaw", Gmt(2024, 3, 30, 20, 11, 7), Gmt(2024, 3, 31, 4));
    ExpectEverySecond("Europe/Warsaw", Gmt(2024, 10, 26, 20, 11, 7), Gmt(2024, 10, 27, 4));
    ExpectEverySecond("Australia/Lord_Howe", Gmt(2024, 4, 6, 12), Gmt(2024, 4, 6, 18));
    ExpectEverySecond("Australia/Lord_Howe", Gmt(2024, 10, 5, 12), Gmt(2024, 10, 5, 18));
}

TEST(ScheduleSearchTest, BoundsBelongToTheSearch) {
    const support::ZoneScope scope("UTC");
    operands::ScheduleEntry entry;
    ASSERT_TRUE(operands::ReadScheduleEntry("0 0 12 * * *", entry));
    const std::int64_t noon = Gmt(2024, 5, 5, 12);
    EXPECT_EQ(FindScheduleTime(entry, noon, noon), noon);
    EXPECT_EQ(FindScheduleTime(entry, noon + 1, noon + 86399), std::nullopt);
    EXPECT_EQ(FindScheduleTime(entry, noon + 1, noon + 86400), noon + 86400);
    EXPECT_EQ(FindScheduleTime(entry, -5, 86400), 43200);
}

TEST(ScheduleSearchTest, ClockChanges) {
    const support::ZoneScope scope("Europe/Warsaw");
    const std::int64_t spring = Gmt(2024, 3, 31, 1);
    EXPECT_EQ(FindClockChange(Gmt(2024, 1, 1), Gmt(2025, 1, 1)), spring);
    EXPECT_EQ(FindClockChange(spring - 1, spring), spring);
    EXPECT_EQ(FindClockChange(spring - 2, spring - 1), std::nullopt);
    EXPECT_EQ(FindClockChange(spring, Gmt(2025, 1, 1)), Gmt(2024, 10, 27, 1));
    EXPECT_EQ(FindClockChange(Gmt(2024, 10, 27, 1), Gmt(2025, 1, 1)), std::nullopt);
}

}  // namespace
}  // namespace kalvex::workbench
