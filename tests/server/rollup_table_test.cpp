// What minutes and hours of archives come to, and when.
#include "server/RollupTable.h"

#include <gmock/gmock.h>

#include <limits>

#include "rolled_store.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kDay = 86400 * 20000;
constexpr const char* kRollups =
    "SELECT span, time - 1728000000, count, numbers, sum, min, min_time - 1728000000, max, "
    "max_time - 1728000000, last, last_time - 1728000000, text_time - 1728000000, "
    "gap_time - 1728000000 FROM rollups ORDER BY span DESC, time";

class RollupTableTest : public RolledStoreTest {};

TEST_F(RollupTableTest, HourHasWhatItsValuesComeTo) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Write({At(kDay + 7200, value::CVal(5)), At(kDay + 7260, value::CVal(1.5)),
           At(kDay + 7300, value::CVal(9.0), value::Status::Unknown),
           At(kDay + 7301, value::CVal(9.0), value::Status::TransmissionError),
           At(kDay + 7302, value::CVal(nan)), At(kDay + 7303, value::CVal("9")),
           At(kDay + 7304, value::CVal("9"), value::Status::Unknown),
           At(kDay + 10799, value::CVal(1.5), value::Status::Alarm),
           At(kDay + 10800, value::CVal(100))});
    RollUpTo(kDay + 10800);
    EXPECT_THAT(Rows(kRollups, 13),
                ElementsAre("3600 7200 8 3 8.0 1.5 7260 5.0 7200 1.5 10799 7303 7304"));
    EXPECT_THAT(Marks(), ElementsAre(std::to_string(kDay + 10800) + " 1"));
}

TEST_F(RollupTableTest, HourWithoutNumbersHasNone) {
    Write({At(kDay, value::CVal("a")), At(kDay + 9, value::CVal("b"))});
    RollUpTo(kDay + 3600);
    EXPECT_THAT(Rows(kRollups, 13), ElementsAre("3600 0 2 0 - - - - - - - 9 -"));
}

TEST_F(RollupTableTest, MinutesAreKeptOfHoursWithMoreThan120Values) {
    Fill(kDay, 30, 120);
    Fill(kDay + 3600, 29, 121);
    RollUpTo(kDay + 7200);
    EXPECT_THAT(Hours(), ElementsAre("1 1728000000 120", "1 1728003600 121"));
    const std::vector<std::string> minutes =
        Rows("SELECT time - 1728000000, count, min, max FROM rollups WHERE span = 60", 4);
    ASSERT_EQ(minutes.size(), 59u);
    EXPECT_EQ(minutes[0], "3600 3 0.0 2.0");
    EXPECT_EQ(minutes[1], "3660 2 3.0 4.0");
    EXPECT_EQ(minutes[58], "7080 1 120.0 120.0");
}

TEST_F(RollupTableTest, HourIsMarkedByWhatChangesItAndRolledUpWhenItIsOver) {
    EXPECT_EQ(Write({At(kDay + 5, value::CVal(1))}).marked, kDay);
    EXPECT_EQ(Write({At(kDay + 6, value::CVal(2))}).marked, kNoHour);
    EXPECT_FALSE(RollUpTo(kDay + 3599).hoursLeft);
    EXPECT_THAT(Hours(), IsEmpty());
    RollUpTo(kDay + 3600);
    EXPECT_THAT(Hours(), ElementsAre("1 1728000000 2"));
    EXPECT_THAT(Marks(), IsEmpty());
    EXPECT_EQ(Write({MarkGap{kX, kDay + 7}}).marked, kDay);
    EXPECT_THAT(Marks(), ElementsAre("1728000000 1"));
    RollUpTo(kDay + 3600);
    EXPECT_THAT(Hours(), ElementsAre("1 1728000000 3"));
}

TEST_F(RollupTableTest, CorrectedHourLosesMinutesThatItNoLongerHas) {
    Fill(kDay, 1, 150);
    Fill(kDay + 3600, 1, 10);
    RollUpTo(kDay + 7200);
    Execute("DELETE FROM history WHERE time < 1728000100");
    Write({At(kDay + 3599, value::CVal(1))});
    RollUpTo(kDay + 7200);
    EXPECT_THAT(Rows("SELECT span, time, count FROM rollups ORDER BY span, time", 3),
                ElementsAre("3600 1728000000 51", "3600 1728003600 10"));
}

TEST_F(RollupTableTest, RollingUpGoesInPiecesFromTheOldestHour) {
    Fill(kDay, 3600, 5);
    EXPECT_TRUE(RollUpTo(kDay + 86400, 1).hoursLeft);
    EXPECT_THAT(Hours(), ElementsAre("1 1728000000 1"));
    EXPECT_TRUE(RollUpTo(kDay + 86400, 60).hoursLeft);
    EXPECT_EQ(Hours().size(), 4u);
    EXPECT_FALSE(RollUpTo(kDay + 86400, 60).hoursLeft);
    EXPECT_EQ(Hours().size(), 5u);
}

TEST_F(RollupTableTest, MarksOfATransactionThatIsTakenBackAreMadeAgain) {
    Execute("CREATE TRIGGER full BEFORE INSERT ON progress BEGIN SELECT RAISE(ABORT, 'full'); END");
    Open();
    const std::vector<StoreOperation> operations = {At(kDay, value::CVal(1)), SaveProgress{"x", 1}};
    std::vector<StoreOutcome> outcomes;
    std::string error;
    EXPECT_FALSE(m_file->Write({{}, {operations}}, outcomes, error));
    EXPECT_EQ(error, "full");
    Execute("DROP TRIGGER full");
    EXPECT_TRUE(m_file->Write({{}, {operations}}, outcomes, error));
    EXPECT_THAT(Marks(), ElementsAre("1728000000 1"));
}

TEST_F(RollupTableTest, RemovedValuesTakeTheirRollupsWithThem) {
    Fill(kDay, 600, 24);
    Fill(kDay, 600, 24, 2);
    RollUpTo(kDay + 86400);
    Write({RemoveArchive{kX, kDay + 3600 + 1800}});
    EXPECT_THAT(Hours(),
                ElementsAre("1 1728003600 6", "1 1728007200 6", "1 1728010800 6", "2 1728000000 6",
                            "2 1728003600 6", "2 1728007200 6", "2 1728010800 6"));
    EXPECT_THAT(Marks(), ElementsAre("1728003600 1"));
    RollUpTo(kDay + 86400);
    EXPECT_EQ(Hours()[0], "1 1728003600 3");
    Write({RemoveArchive{kX, kDay + 3600 + 1800}, RemoveArchive{3, kDay}});
    EXPECT_THAT(Marks(), IsEmpty());
}

// ---- files that have archives, and no rollups

class RollupTableOlderTest : public RollupTableTest {
  protected:
    void MakeOlder() {
        m_file.reset();
        Execute("DROP TABLE rollups; DROP TABLE rollup_marks; DROP TABLE rollup_place");
        Open();
    }
};

TEST_F(RollupTableOlderTest, HoursAreRolledUpInPieces) {
    Fill(kDay, 1800, 8);
    Fill(kDay + 3600, 3600, 3, 4);
    Write({PutValue{2, value::KindHour, kDay, value::CVal(1)},
           PutValue{4, value::KindDay, kDay, value::CVal(1)}});
    MakeOlder();
    EXPECT_THAT(Hours(), IsEmpty());
    StoreOutcome outcome = RollUpTo(kDay + 86400, 1);
    EXPECT_TRUE(outcome.hoursLeft);
    EXPECT_THAT(Hours(), ElementsAre("1 1728000000 2"));
    Open();
    int pieces = 0;
    for (; outcome.hoursLeft; ++pieces) outcome = RollUpTo(kDay + 86400, 50);
    EXPECT_EQ(pieces, 4);
    EXPECT_THAT(Hours(),
                ElementsAre("1 1728000000 2", "1 1728003600 2", "1 1728007200 2", "1 1728010800 2",
                            "4 1728003600 1", "4 1728007200 1", "4 1728010800 1"));
    EXPECT_THAT(Rows("SELECT * FROM rollup_place", 1), IsEmpty());
}

TEST_F(RollupTableOlderTest, HourThatIsUnderWayIsMarked) {
    Fill(kDay, 1800, 3);
    MakeOlder();
    EXPECT_FALSE(RollUpTo(kDay + 3600).hoursLeft);
    EXPECT_THAT(Hours(), ElementsAre("1 1728000000 2"));
    EXPECT_THAT(Marks(), ElementsAre("1728003600 1"));
    RollUpTo(kDay + 7200);
    EXPECT_THAT(Hours(), ElementsAre("1 1728000000 2", "1 1728003600 1"));
}

TEST_F(RollupTableOlderTest, WhatHasNoTimeIsPassedOver) {
    Fill(kDay, 1, 1);
    Fill(kDay, 1, 1, 7);
    Execute(
        "INSERT INTO history (variable, kind, time, type, status) VALUES (1, 6, -5, 150, 0), "
        "(1, 6, 9223372036854775807, 150, 0), (2, 6, -9223372036854775808, 150, 0), "
        "(3, 99, 5, 150, 0), (9223372036854775807, 7, 1, 150, 0)");
    MakeOlder();
    EXPECT_FALSE(RollUpTo(kDay + 3600).hoursLeft);
    EXPECT_THAT(Hours(), ElementsAre("1 1728000000 1", "7 1728000000 1"));
    EXPECT_THAT(Rows("SELECT * FROM rollup_place", 1), IsEmpty());
}

}  // namespace
}  // namespace kalvex::server
