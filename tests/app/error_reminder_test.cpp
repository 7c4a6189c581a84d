#include "app/ErrorReminder.h"

#include <gmock/gmock.h>

#include <optional>
#include <utility>

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;

class ErrorReminderTest : public testing::Test {
  protected:
    // After so many seconds.
    std::vector<std::size_t> After(std::int64_t seconds) {
        clock.Advance(seconds * 1000);
        return reminder->FindDue(standing);
    }

    platform::VirtualClock clock{1'710'050'400};
    std::optional<ErrorReminder> reminder{clock};
    std::vector<StandingFault> standing{{"a.kx", 2, 3, 1'710'050'400}};
};

TEST_F(ErrorReminderTest, ErrorIsDueAfterAnHourAndADayAndEachDayOnceEach) {
    EXPECT_THAT(After(0), IsEmpty());
    EXPECT_THAT(After(kHour - 1), IsEmpty());
    EXPECT_THAT(After(1), ElementsAre(0));
    EXPECT_THAT(After(0), IsEmpty());
    EXPECT_THAT(After(1), IsEmpty());
    EXPECT_THAT(After(kDay - kHour - 2), IsEmpty());
    EXPECT_THAT(After(1), ElementsAre(0));
    EXPECT_THAT(After(kDay - 1), IsEmpty());
    EXPECT_THAT(After(1), ElementsAre(0));
    EXPECT_THAT(After(0), IsEmpty());
}

TEST_F(ErrorReminderTest, NobodyWhoAskedLateHearsTwice) {
    After(0);
    EXPECT_THAT(After(5 * kDay + 7), ElementsAre(0));
    EXPECT_THAT(After(kDay - 8), IsEmpty());
    EXPECT_THAT(After(1), ElementsAre(0));
}

TEST_F(ErrorReminderTest, ErrorThatIsGoneIsForgotten) {
    After(0);
    const std::vector<StandingFault> gone = std::exchange(standing, {});
    EXPECT_THAT(After(kHour), IsEmpty());
    standing = gone;
    EXPECT_THAT(After(0), IsEmpty());
    EXPECT_THAT(After(kHour - 1), IsEmpty());
    EXPECT_THAT(After(1), ElementsAre(0));
}

TEST_F(ErrorReminderTest, AnotherErrorStandsForItself) {
    const StandingFault first = standing.front();
    for (const StandingFault& other :
         {StandingFault{"b.kx", 2, 3, first.since}, StandingFault{"a.kx", 1, 3, first.since},
          StandingFault{"a.kx", 2, 4, first.since}, StandingFault{"a.kx", 2, 3, first.since + 1}}) {
        reminder.emplace(clock);
        standing = {first};
        After(0);
        standing = {first, other};
        EXPECT_THAT(After(kHour - 1), IsEmpty());
        EXPECT_THAT(After(1), ElementsAre(0));
        EXPECT_THAT(After(kHour - 1), ElementsAre(1));
    }
}

TEST_F(ErrorReminderTest, WallClockThatIsSetChangesNothing) {
    After(0);
    clock.SetSystemTime(1'710'050'400 + kDay);
    EXPECT_THAT(After(kHour - 1), IsEmpty());
    clock.SetSystemTime(0);
    EXPECT_THAT(After(1), ElementsAre(0));
}

}  // namespace
}  // namespace kalvex::app
