#include "programs/kalvex-run/JsonResult.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "support/fake_script.h"

namespace kalvex::programs {
namespace {

std::string Cell(const value::CVal& value) {
    return run::CellJson(value).dump();
}

std::string Record(support::FakeScript& script, std::string_view name) {
    return run::VariableJson(*script.Variables().Find(text::FromUtf8(name))).dump();
}

constexpr const char* kEmpty = R"({"type":255,"status":0,"time":0,"value":null,"text":""})";

TEST(JsonResultTest, CellOfEachType) {
    EXPECT_EQ(Cell(value::CVal()), kEmpty);
    EXPECT_EQ(Cell(value::CVal(true)), R"({"type":120,"status":0,"time":0,"value":1,"text":"1"})");
    EXPECT_EQ(Cell(value::CVal(short{-3})),
              R"({"type":140,"status":0,"time":0,"value":-3,"text":"-3"})");
    EXPECT_EQ(Cell(value::CVal(7)), R"({"type":150,"status":0,"time":0,"value":7,"text":"7"})");
    EXPECT_EQ(Cell(value::CVal(4000000000u)),
              R"({"type":151,"status":0,"time":0,"value":4000000000,"text":"4000000000"})");
    EXPECT_EQ(Cell(value::CVal(1710050400L)),
              R"({"type":160,"status":0,"time":0,"value":1710050400,"text":"1710050400"})");
    EXPECT_EQ(Cell(value::CVal(2.5)),
              R"({"type":171,"status":0,"time":0,"value":2.5,"text":"2.50"})");
    EXPECT_EQ(Cell(value::CVal(12.0)),
              R"({"type":171,"status":0,"time":0,"value":12.0,"text":"12.00"})");
    EXPECT_EQ(Cell(value::CVal(text::FromUtf8("łą\"ka"))),
              R"({"type":190,"status":0,"time":0,"value":"łą\"ka","text":"łą\"ka"})");
}

TEST(JsonResultTest, DoubleThatIsNotFiniteHasNoValue) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Cell(value::CVal(infinity)),
              R"({"type":171,"status":0,"time":0,"value":null,"text":"inf"})");
    EXPECT_EQ(Cell(value::CVal(-infinity)),
              R"({"type":171,"status":0,"time":0,"value":null,"text":"-inf"})");
    EXPECT_EQ(Cell(value::CVal(std::numeric_limits<double>::quiet_NaN())),
              R"({"type":171,"status":0,"time":0,"value":null,"text":"nan"})");
}

TEST(JsonResultTest, CellHasStatusAndTime) {
    value::CVal value(5);
    value.SetStatus(value::Status::SetByUser | value::Status::Supervisory);
    value.SetTime(-1);
    EXPECT_EQ(Cell(value), R"({"type":150,"status":32800,"time":-1,"value":5,"text":"5"})");
}

TEST(JsonResultTest, LocalHasItsFiveValues) {
    support::FakeScript script;
    operands::CVariableLocal& local = script.Local("ŁĄKA", value::CVal(1));
    local.SetValue(value::CVal(2), value::KindHour);
    local.SetValue(value::CVal(5), value::KindSpan);
    const std::string empty = kEmpty;
    EXPECT_EQ(Record(script, "ŁĄKA"),
              R"({"name":"ŁĄKA","kind":"LOCAL","slots":{)"
              R"("CURDATA":{"type":150,"status":0,"time":0,"value":1,"text":"1"},)"
              R"("HREP":{"type":150,"status":0,"time":0,"value":2,"text":"2"},)"
              R"("DREP":)" +
                  empty + R"(,"MREP":)" + empty +
                  R"(,"SREP":{"type":150,"status":0,"time":0,"value":5,"text":"5"}}})");
}

TEST(JsonResultTest, PointerHasItsTarget) {
    support::FakeScript script;
    script.Pointer("W", "Żółw");
    script.Pointer("PUSTY", "");
    EXPECT_EQ(Record(script, "W"), R"({"name":"W","kind":"POINTER","target":"Żółw"})");
    EXPECT_EQ(Record(script, "PUSTY"), R"({"name":"PUSTY","kind":"POINTER","target":""})");
    EXPECT_EQ(script.Error(), "0");
}

TEST(JsonResultTest, ListHasItsElementsUsableOrNot) {
    support::FakeScript script;
    value::CVal unknown(4);
    unknown.SetStatus(value::Status::Unknown);
    script.List("L", {value::CVal("x"), unknown}).MoveTo(1);
    script.List("PUSTA");
    EXPECT_EQ(Record(script, "L"), R"({"name":"L","kind":"LIST","iterator":1,"elements":[)"
                                   R"({"type":190,"status":0,"time":0,"value":"x","text":"x"},)"
                                   R"({"type":150,"status":1,"time":0,"value":4,"text":"4"}]})");
    EXPECT_EQ(Record(script, "PUSTA"),
              R"({"name":"PUSTA","kind":"LIST","iterator":-1,"elements":[]})");
}

}  // namespace
}  // namespace kalvex::programs
