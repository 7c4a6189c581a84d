// The texts of the messages.
#include "console/ConsoleMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "console/VariableMessages.h"
#include "support/zone_scope.h"
#include "value/Status.h"
#include "workbench/model/VariableSlots.h"

namespace kalvex::console {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using workbench::CellText;

TEST(ConsoleMessagesTest, CodeIsTheFirstNumber) {
    EXPECT_EQ(MessageFields("2").Code(), MessageCode::Start);
    EXPECT_EQ(MessageFields(" 4x\t").Code(), MessageCode::Stop);
    EXPECT_EQ(MessageFields("\t\t6\t1").Code(), MessageCode::Reset);
    EXPECT_EQ(MessageFields("start").Code(), MessageCode::AskSession);
    EXPECT_EQ(MessageFields("21\ta\tb").Code(), MessageCode::SessionHeld);
    for (const char* text : {"", "\t", "22", "-1", "-5", "99999999999999999999", "4294967296"}) {
        EXPECT_EQ(MessageFields(text).Code(), MessageCode::None) << text;
    }
}

TEST(ConsoleMessagesTest, EmptyFieldsMoveTheOthersUp) {
    const MessageFields fields("1\t\tnowy\t9\t");
    EXPECT_EQ(fields.Text(1), "nowy");
    EXPECT_EQ(fields.Number(2), 9);
    EXPECT_EQ(fields.Text(3), "");
    EXPECT_EQ(fields.Number(3), 0);
    EXPECT_EQ(fields.NumberOr(3, -1), -1);
    EXPECT_EQ(fields.NumberOr(2, -1), 9);
    EXPECT_EQ(MessageFields("10\t-3").Number(1), -3);
    EXPECT_EQ(MessageFields("10\tx").NumberOr(1, -1), 0);
}

TEST(ConsoleMessagesTest, TextsHaveTheirFields) {
    EXPECT_EQ(CodeText(MessageCode::WasReset), "7");
    EXPECT_EQ(LineText(MessageCode::BreakpointSet, 12), "11\t12");
    EXPECT_EQ(StateText(MessageCode::Stopped, 10, 3), "5\t10\t3");
    EXPECT_EQ(NamesText(MessageCode::SessionHeld, "a", "b"), "21\ta\tb");
    EXPECT_EQ(AskSessionText("K_RC", false), "0\tK_RC\t0");
    EXPECT_EQ(AskSessionText("K_RC", true), "0\tK_RC\t1");
    EXPECT_EQ(PassSessionText("M", "K_RC", 9, 4, {}), "1\tM\tK_RC\t9\t4\t");
    EXPECT_EQ(PassSessionText("M", "K_RC", 9, 4, {7, 2}), "1\tM\tK_RC\t9\t4\t7;2;");
}

TEST(ConsoleMessagesTest, BreakpointsAreReadAsTheyAreWritten) {
    EXPECT_THAT(ReadBreakpoints(BreakpointsText({7, 2})), ElementsAre(7, 2));
    EXPECT_THAT(ReadBreakpoints(";;3;;"), ElementsAre(3));
    EXPECT_THAT(ReadBreakpoints(""), IsEmpty());
}

TEST(ConsoleMessagesTest, ValueOfAMessageHasTheTypeOfItsCode) {
    EXPECT_EQ(CellText(ReadMessageValue("12.5", 171, 0)), "1970-01-01 00:00:00 ( 0 ) 12.50");
    EXPECT_EQ(CellText(ReadMessageValue("12 bar", 171, 32)), "1970-01-01 00:00:00 ( 32 ) 12 bar");
    EXPECT_EQ(CellText(ReadMessageValue("12.5", 190, 1)), "1970-01-01 00:00:00 ( 1 ) 12.5");
    EXPECT_EQ(ReadMessageValue("12.5", 150, 545).GetType(), value::ValueType::None);
    EXPECT_EQ(ReadMessageValue("12.5", 150, 545).GetStatus(), 545);
}

}  // namespace
}  // namespace kalvex::console
