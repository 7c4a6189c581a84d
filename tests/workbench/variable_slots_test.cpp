// The texts by which variables are shown.
#include "workbench/model/VariableSlots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "slotted_remote.h"
#include "support/fake_script.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"
#include "value/Status.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

value::CVal Stamped(value::CVal value, std::uint16_t status, std::int64_t time) {
    value.SetStatus(status);
    value.SetTime(time);
    return value;
}

constexpr std::int64_t kMorning = 1710050400;  // 2024-03-10 06:00:00 GMT

class VariableSlotsTest : public testing::Test {
  protected:
    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::FakeScript m_script;
};

TEST_F(VariableSlotsTest, CellHasLocalTimeStatusAndText) {
    EXPECT_EQ(CellText(Stamped(value::CVal(12.5), 0, kMorning)), "2024-03-10 07:00:00 ( 0 ) 12.50");
    EXPECT_EQ(CellText(Stamped(value::CVal(""), 65535, 1720591445)),
              "2024-07-10 08:04:05 ( 65535 ) ");
    EXPECT_EQ(CellText(value::CVal()), "1970-01-01 01:00:00 ( 0 ) ");
    EXPECT_EQ(CellText(value::CVal("%s %d")), "1970-01-01 01:00:00 ( 0 ) %s %d");
}

TEST_F(VariableSlotsTest, KindsHaveTheirLetters) {
    EXPECT_EQ(KindLetter(operands::VariableLocal), 'L');
    EXPECT_EQ(KindLetter(operands::VariablePointer), 'P');
    EXPECT_EQ(KindLetter(operands::VariableList), 'A');
    EXPECT_EQ(KindLetter(operands::VariableRemote), 'R');
    EXPECT_EQ(KindLetter(operands::VariableNone), '?');
}

TEST_F(VariableSlotsTest, LocalVariableShowsItsCurrentValueAlone) {
    operands::CVariableLocal& local = m_script.Local("X");
    EXPECT_THAT(SlotTexts(local), ElementsAre("1970-01-01 01:00:00 ( 0 ) "));
    local.SetValue(value::CVal(2), value::KindHour);
    local.SetValue(Stamped(value::CVal(7.0), value::Status::Unknown, kMorning), value::KindCurrent);
    EXPECT_THAT(SlotTexts(local), ElementsAre("2024-03-10 07:00:00 ( 1 ) 7.00"));
}

TEST_F(VariableSlotsTest, ListShowsTheElementUnderItsIterator) {
    operands::CVariableList& list =
        m_script.List("L", {value::CVal(1), Stamped(value::CVal(2), 1, 0)});
    EXPECT_THAT(SlotTexts(list), ElementsAre(""));
    list.MoveTo(1);
    EXPECT_THAT(SlotTexts(list), ElementsAre("1970-01-01 01:00:00 ( 1 ) 2"));
    list.MoveNext();
    EXPECT_THAT(SlotTexts(list), ElementsAre(""));
}

TEST_F(VariableSlotsTest, RemoteVariableShowsAllFiveAsTheyStand) {
    auto& remote = SlottedRemote::In(m_script, "R");
    EXPECT_THAT(SlotTexts(remote), ElementsAre("", "", "", "", ""));
    remote.values[value::KindCurrent] = Stamped(value::CVal(1.5), 1, kMorning);
    remote.values[value::KindDay] = Stamped(value::CVal("dzie\xf1"), 2, 0);
    remote.values[value::KindSpan] = value::CVal(5);
    remote.answers[value::KindSpan] = operands::ReadUnavailable;
    EXPECT_THAT(SlotTexts(remote), ElementsAre("2024-03-10 07:00:00 ( 1 ) 1.50", "",
                                               "1970-01-01 01:00:00 ( 2 ) dzie\xf1", "", ""));
}

TEST_F(VariableSlotsTest, PointerShowsWhatItLeadsTo) {
    auto& remote = SlottedRemote::In(m_script, "R");
    remote.values[value::KindMonth] = value::CVal(4);
    m_script.Local("X", value::CVal(5.0)).SetValue(value::CVal(6.0), value::KindHour);
    m_script.Pointer("P", "R");
    EXPECT_THAT(SlotTexts(m_script.Pointer("Q", "P")),
                ElementsAre("", "", "", "1970-01-01 01:00:00 ( 0 ) 4", ""));
    operands::CVariablePointer& toLocal = m_script.Pointer("S", "X.HREP");
    EXPECT_THAT(SlotTexts(toLocal), ElementsAre("1970-01-01 01:00:00 ( 0 ) 5.00"));
    EXPECT_EQ(ShownVariable(toLocal), m_script.Variables().Find("X"));
}

TEST_F(VariableSlotsTest, PointerToNothingShowsNothingAndIsNoErrorOfTheScript) {
    m_script.SetError(operands::ErrorOther, "", true);
    EXPECT_THAT(SlotTexts(m_script.Pointer("P", "NIE")), ElementsAre(""));
    EXPECT_THAT(SlotTexts(m_script.Pointer("Q", "")), ElementsAre(""));
    operands::CVariablePointer& ring = m_script.Pointer("A", "B");
    m_script.Pointer("B", "A");
    EXPECT_THAT(SlotTexts(ring), ElementsAre(""));
    EXPECT_EQ(ShownVariable(ring), nullptr);
    EXPECT_EQ(m_script.LastError().m_nErrorCode, operands::ErrorOther);
    EXPECT_THAT(std::string_view(m_script.LastError().m_strErrorText), IsEmpty());
}

}  // namespace
}  // namespace kalvex::workbench
