#include "programs/kalvexctl/VariableRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "text/CodePage.h"

namespace kalvex::programs {
namespace {

using kalvexctl::ReadVariableValues;
using kalvexctl::VariableRow;
using kalvexctl::VariableSlot;
using testing::ElementsAre;
using testing::Optional;

const std::string kHead = "2024-03-10 07:00:00 ( 0 ) ";

VariableSlot Slot(const std::string& text, int status = 0) {
    return {"2024-03-10 07:00:00", status, text};
}

TEST(VariableRowsTest, LocalVariableHasOneSlot) {
    EXPECT_EQ(ReadVariableValues("19\tX\t;2024-03-10 07:00:00 ( 2080 ) 5.00;"),
              (VariableRow{"X", {Slot("5.00", 2080)}}));
    EXPECT_EQ(ReadVariableValues("19\tX\t;;"), (VariableRow{"X", {std::nullopt}}));
    EXPECT_EQ(ReadVariableValues("19\tX\t;" + kHead + ";"), (VariableRow{"X", {Slot("")}}));
}

TEST(VariableRowsTest, RemoteVariableHasFive) {
    EXPECT_EQ(
        ReadVariableValues("19\tR\t;" + kHead + "1.00;;" + kHead + "2.00;;;"),
        (VariableRow{"R", {Slot("1.00"), std::nullopt, Slot("2.00"), std::nullopt, std::nullopt}}));
    EXPECT_THAT(ReadVariableValues("19\tR\t;;;;;;")->slots, testing::SizeIs(5));
}

TEST(VariableRowsTest, TextsMayHoldSeparators) {
    EXPECT_EQ(ReadVariableValues("19\tX\t;" + kHead + "a;b;;c\td;"),
              (VariableRow{"X", {Slot("a;b;;c\td")}}));
    EXPECT_EQ(
        ReadVariableValues("19\tR\t;" + kHead + "a;;b;;;;;"),
        (VariableRow{"R", {Slot("a;;b"), std::nullopt, std::nullopt, std::nullopt, std::nullopt}}));
}

TEST(VariableRowsTest, TextsComeOutAsUtf8) {
    EXPECT_EQ(ReadVariableValues(text::FromUtf8("19\tŻ\t;" + kHead + "żółć;")),
              (VariableRow{"Ż", {Slot("żółć")}}));
}

TEST(VariableRowsTest, OtherMessagesAreNone) {
    for (const char* text :
         {"", "18\tX", "19", "19\tX", "19\tX\t", "19\tX\t;", "190\tX\t;;", "20"}) {
        EXPECT_FALSE(ReadVariableValues(text)) << text;
    }
}

TEST(VariableRowsTest, RowShowsEachSlot) {
    std::vector<std::string> texts;
    for (const kalvexctl::Cell& cell :
         kalvexctl::RowOf({"R", {Slot("1.00", 3), std::nullopt}}).cells) {
        texts.push_back(cell.text);
    }
    EXPECT_THAT(texts, ElementsAre("R", "2024-03-10 07:00:00 ( 3 ) 1.00", ""));
}

TEST(VariableRowsTest, JsonHasEveryKey) {
    EXPECT_EQ(
        kalvexctl::VariablesJson(
            "a.kx",
            {{"X", {Slot("5.00")}},
             {"R", {std::nullopt, Slot("\"", 1), std::nullopt, std::nullopt, std::nullopt}}}),
        R"({"script":"a.kx","variables":[)"
        R"({"name":"X","slots":{"CURDATA":{"time":"2024-03-10 07:00:00","status":0,"text":"5.00"}}},)"
        R"({"name":"R","slots":{"CURDATA":null,"HREP":{"time":"2024-03-10 07:00:00","status":1,"text":"\""},)"
        R"("DREP":null,"MREP":null,"SREP":null}}]})");
}

}  // namespace
}  // namespace kalvex::programs
