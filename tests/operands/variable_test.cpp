#include "operands/Variable.h"

#include <gmock/gmock.h>

#include "support/fake_script.h"
#include "support/value_dump.h"

namespace kalvex::operands {
namespace {

using testing::ElementsAre;

std::vector<std::string> Texts(const CVariableList& list) {
    std::vector<std::string> texts;
    for (const value::CVal& element : list.Elements()) texts.push_back(value::ValueToText(element));
    return texts;
}

TEST(VariableTest, BaseClassAnswersNothing) {
    CVariable variable("x");
    value::CVal value(7);
    std::uint16_t word = 9;
    std::int64_t time = 9;
    std::string text = "t";
    value::CArchiveValueList list;
    EXPECT_EQ(variable.GetKind(), VariableNone);
    EXPECT_EQ(variable.GetName(), "x");
    EXPECT_EQ(variable.GetValue(value, value::KindCurrent, 1), 0);
    EXPECT_EQ(variable.PeekValue(value::KindCurrent), nullptr);
    EXPECT_EQ(variable.SetValue(value, value::KindCurrent), 0);
    EXPECT_EQ(variable.GetValueType(value::KindCurrent, 1), 0);
    EXPECT_EQ(variable.GetStatus(&word, value::KindCurrent), 0);
    EXPECT_EQ(variable.SetStatus(1, value::KindCurrent), 0);
    EXPECT_EQ(variable.GetTime(&time, value::KindCurrent), 0);
    EXPECT_EQ(variable.SetTime(1, value::KindCurrent), 0);
    EXPECT_EQ(variable.CopyFrom(&variable, value::KindCurrent), 0);
    EXPECT_EQ(variable.GetNameValueText(text, value::KindCurrent), 0);
    EXPECT_EQ(variable.SetValueText("1", value::KindCurrent), 0);
    EXPECT_EQ(variable.IsReportLoaded(value::KindHour), 0);
    EXPECT_EQ(variable.IsReportInited(value::KindHour), 0);
    EXPECT_EQ(variable.RequestRange(value::KindHour, 1, 2), 0);
    EXPECT_EQ(variable.GetRequestStart(), 0);
    EXPECT_EQ(variable.GetRequestEnd(), 0);
    EXPECT_EQ(variable.IsReady(value::KindHour), 0);
    EXPECT_EQ(variable.PutValue(value::KindHour, 1, value, true), 0);
    EXPECT_EQ(variable.FlushPuts(list), 0);
    EXPECT_EQ(variable.InitLoad(value::KindHour, 1), 0);
    EXPECT_EQ(variable.InitLoadRefresh(value::KindArchive, 1), 0);
    EXPECT_EQ(variable.InitReport(value::KindHour, 1), 0);
    EXPECT_EQ(variable.InitCalc(value::KindHour, 1), 0);
    EXPECT_EQ(variable.SetLocked(true), 0);
    EXPECT_EQ(variable.SetIgnoreUnknown(true), 0);
    EXPECT_EQ(variable.GetSourceRecord(), nullptr);
    EXPECT_EQ(variable.IsArchived() + variable.HasHourReport() + variable.HasDayReport() +
                  variable.HasMonthReport() + variable.HasSpanReport(),
              0);
    EXPECT_EQ(variable.GetDescription() + variable.GetDescName() + variable.GetUnit() +
                  variable.GetDispFormat() + variable.GetMinVal() + variable.GetMaxVal(),
              "");
    EXPECT_EQ(value::ValueToInt(value), 7);
}

TEST(VariableLocalTest, UnassignedReadsAsNoValue) {
    CVariableLocal variable("A");
    value::CVal value(1);
    EXPECT_EQ(variable.GetKind(), VariableLocal);
    EXPECT_EQ(variable.GetValue(value, value::KindCurrent, 0), 1);
    EXPECT_EQ(value.GetType(), value::ValueType::None);
    EXPECT_EQ(variable.GetValueType(value::KindCurrent, 1), value::ValueType::None);
}

TEST(VariableLocalTest, FiveKindsAreReadableWhateverTheirStatus) {
    CVariableLocal variable("A");
    for (const value::ValueKind kind :
         {value::KindCurrent, value::KindHour, value::KindDay, value::KindMonth, value::KindSpan}) {
        value::CVal value(kind);
        value.SetStatus(value::Status::Unknown);
        EXPECT_EQ(variable.SetValue(value, kind), kind == value::KindHour ? 0 : 1) << kind;
    }
    for (const value::ValueKind kind :
         {value::KindCurrent, value::KindHour, value::KindDay, value::KindMonth, value::KindSpan}) {
        value::CVal value;
        EXPECT_EQ(variable.GetValue(value, kind, 0), 1);
        EXPECT_EQ(value::ValueToInt(value), kind);
    }
}

TEST(VariableLocalTest, EveryKindIsSeenInPlace) {
    support::FakeScript script;
    CVariableLocal& local = script.Local("a");
    value::CVal value(5);
    value.SetStatus(value::Status::Unknown);
    local.SetValue(value, value::KindSpan);
    EXPECT_EQ(local.PeekValue(value::KindCurrent)->GetType(), value::ValueType::None);
    const value::CVal* seen = local.PeekValue(value::KindSpan);
    EXPECT_EQ(support::Dump(*seen), "150:5");
    EXPECT_EQ(seen->GetStatus(), value::Status::Unknown);
    local.SetValue(value::CVal("x"), value::KindSpan);
    EXPECT_EQ(support::Dump(*seen), "190:x");
    EXPECT_EQ(local.PeekValue(value::KindNone), nullptr);
    EXPECT_EQ(local.PeekValue(value::KindArchive), nullptr);
}

TEST(VariableLocalTest, ValuesAreSetWhereTheyStand) {
    support::FakeScript script;
    CVariableLocal& local = script.Local("a", support::Stamped(value::CVal("ab"), 100, 5));
    EXPECT_TRUE(local.At(value::KindCurrent)->AppendText("cd"));
    EXPECT_EQ(support::Dump(script.Value("a")), "190:abcd");
    *local.At(value::KindHour) = value::CVal(7);
    EXPECT_EQ(support::Dump(script.Value("a", value::KindHour)), "150:7");
    EXPECT_EQ(local.At(value::KindNone), nullptr);
    EXPECT_EQ(local.At(value::KindArchive), nullptr);
}

TEST(VariableLocalTest, OtherKindsAreNeverReadable) {
    CVariableLocal variable("A");
    value::CVal value(5);
    for (const value::ValueKind kind : {value::KindNone, value::KindArchive, value::ValueKind(7)}) {
        EXPECT_EQ(variable.GetValue(value, kind, 1), 0);
        EXPECT_EQ(variable.SetValue(value::CVal(1), kind), 0);
        EXPECT_EQ(variable.GetValueType(kind, 1), value::ValueType::Unreadable);
    }
    EXPECT_EQ(value::ValueToInt(value), 5);
}

TEST(VariableLocalTest, StatusAndTimeOfTheHourValueAreSetAndReportFailure) {
    CVariableLocal variable("A");
    EXPECT_EQ(variable.SetStatus(4, value::KindHour), 0);
    EXPECT_EQ(variable.SetTime(100, value::KindHour), 0);
    EXPECT_EQ(variable.SetStatus(8, value::KindDay), 1);
    EXPECT_EQ(variable.SetTime(200, value::KindDay), 1);
    std::uint16_t word = 0;
    std::int64_t time = 0;
    EXPECT_EQ(variable.GetStatus(&word, value::KindHour), 1);
    EXPECT_EQ(variable.GetTime(&time, value::KindHour), 1);
    EXPECT_EQ(word, 4);
    EXPECT_EQ(time, 100);
    EXPECT_EQ(variable.GetStatus(&word, value::KindArchive), 0);
    EXPECT_EQ(variable.GetTime(&time, value::KindArchive), 0);
    EXPECT_EQ(variable.SetStatus(1, value::KindArchive), 0);
    EXPECT_EQ(variable.SetTime(1, value::KindArchive), 0);
}

TEST(VariableLocalTest, ServerOperationsSucceedAndDoNothing) {
    CVariableLocal variable("A");
    value::CArchiveValueList list;
    EXPECT_EQ(variable.IsReportLoaded(value::KindHour), 1);
    EXPECT_EQ(variable.IsReportInited(value::KindHour), 1);
    EXPECT_EQ(variable.IsReady(value::KindArchive), 1);
    EXPECT_EQ(variable.RequestRange(value::KindHour, 1, 2), 1);
    EXPECT_EQ(variable.PutValue(value::KindHour, 1, value::CVal(1), true), 1);
    EXPECT_EQ(variable.InitLoad(value::KindHour, 1), 1);
    EXPECT_EQ(variable.InitLoadRefresh(value::KindArchive, 1), 1);
    EXPECT_EQ(variable.InitReport(value::KindHour, 1), 1);
    EXPECT_EQ(variable.InitCalc(value::KindHour, 1), 1);
    EXPECT_EQ(variable.SetLocked(true), 1);
    EXPECT_EQ(variable.SetIgnoreUnknown(true), 0);
    EXPECT_EQ(variable.FlushPuts(list), 0);
    EXPECT_EQ(variable.GetValueType(value::KindHour, 1), value::ValueType::None);
}

TEST(VariableLocalTest, ValueTextAlwaysLandsInTheCurrentValue) {
    CVariableLocal variable("A");
    EXPECT_EQ(variable.SetValueText("12", value::KindDay), 1);
    value::CVal value;
    variable.GetValue(value, value::KindCurrent, 0);
    EXPECT_EQ(support::Dump(value), "190:12");
    variable.GetValue(value, value::KindDay, 0);
    EXPECT_EQ(value.GetType(), value::ValueType::None);
    std::string text;
    EXPECT_EQ(variable.GetNameValueText(text, value::KindCurrent), 1);
    EXPECT_EQ(text, "A:12");
    EXPECT_EQ(variable.GetNameValueText(text, value::KindArchive), 0);
}

TEST(VariableLocalTest, CopyCarriesStatusAndTime) {
    CVariableLocal from("A");
    CVariableLocal to("B");
    value::CVal value(3.5);
    value.SetStatus(33);
    value.SetTime(77);
    from.SetValue(value, value::KindDay);
    EXPECT_EQ(to.CopyFrom(&from, value::KindDay), 1);
    EXPECT_EQ(to.CopyFrom(nullptr, value::KindDay), 0);
    EXPECT_EQ(to.CopyFrom(&from, value::KindArchive), 0);
    value::CVal copied;
    to.GetValue(copied, value::KindDay, 0);
    EXPECT_EQ(copied.GetStatus(), 33);
    EXPECT_EQ(copied.GetTime(), 77);
    EXPECT_EQ(value::ValueToDouble(copied), 3.5);
}

TEST(VariableListTest, ReadsThroughItsIterator) {
    CVariableList list("L");
    value::CVal value(9);
    EXPECT_EQ(list.GetKind(), VariableList);
    EXPECT_EQ(list.GetIterator(), -1);
    list.Add(value::CVal(1));
    EXPECT_EQ(list.GetValue(value, value::KindCurrent, 0), 0);
    EXPECT_EQ(value::ValueToInt(value), 9);
    list.MoveFirst();
    EXPECT_EQ(list.GetValue(value, value::KindCurrent, 0), 1);
    EXPECT_EQ(value::ValueToInt(value), 1);
    EXPECT_EQ(list.GetValue(value, value::KindHour, 1), 0);
}

TEST(VariableListTest, UnknownElementIsRefusedThoughFilledIn) {
    CVariableList list("L");
    value::CVal element(4);
    element.SetStatus(value::Status::Unknown);
    list.Add(element);
    list.MoveFirst();
    value::CVal value;
    EXPECT_EQ(list.GetValue(value, value::KindCurrent, 0), 0);
    EXPECT_EQ(value::ValueToInt(value), 4);
    EXPECT_EQ(list.GetValue(value, value::KindCurrent, 1), 1);
    EXPECT_EQ(list.GetValueType(value::KindCurrent, 0), value::ValueType::Int);
    std::string text;
    EXPECT_EQ(list.GetNameValueText(text, value::KindCurrent), 0);
}

TEST(VariableListTest, CurrentElementIsSeenInPlaceWhereAScriptMayReadIt) {
    support::FakeScript script;
    CVariableList& list = script.List("L", {value::CVal("a"), value::CVal("b")});
    EXPECT_EQ(list.PeekValue(value::KindCurrent), nullptr);
    list.MoveTo(1);
    EXPECT_EQ(list.PeekValue(value::KindCurrent), &list.Elements()[1]);
    EXPECT_EQ(list.PeekValue(value::KindHour), nullptr);
    list.SetStatus(value::Status::Unknown, value::KindCurrent);
    EXPECT_EQ(list.PeekValue(value::KindCurrent), nullptr);
    EXPECT_EQ(list.GetValueType(value::KindCurrent, 0), value::ValueType::Text);
    list.MoveTo(2);
    EXPECT_EQ(list.PeekValue(value::KindCurrent), nullptr);
}

TEST(VariableListTest, WritesOverTheCurrentElement) {
    CVariableList list("L");
    EXPECT_EQ(list.SetValue(value::CVal(1), value::KindCurrent), 0);
    list.Add(value::CVal(1));
    list.Add(value::CVal(2));
    list.MoveTo(1);
    EXPECT_EQ(list.SetValue(value::CVal(5), value::KindCurrent), 1);
    EXPECT_EQ(list.SetValue(value::CVal(6), value::KindDay), 0);
    EXPECT_THAT(Texts(list), ElementsAre("1", "5"));
    EXPECT_EQ(list.GetValueType(value::KindCurrent, 1), value::ValueType::Int);
    list.MoveNext();
    EXPECT_EQ(list.GetValueType(value::KindCurrent, 1), value::ValueType::Unreadable);
    CVariableLocal source("A");
    EXPECT_EQ(list.CopyFrom(&source, value::KindCurrent), 0);
}

TEST(VariableListTest, InsertGoesInFrontOrBehindTheEnd) {
    CVariableList list("L");
    EXPECT_EQ(list.Insert(0, value::CVal("a")), 1);
    EXPECT_EQ(list.Insert(1, value::CVal("b")), 1);
    EXPECT_EQ(list.Insert(99, value::CVal("c")), 1);
    EXPECT_EQ(list.Insert(1, value::CVal("x")), 1);
    EXPECT_EQ(list.Insert(-1, value::CVal("y")), 0);
    EXPECT_THAT(Texts(list), ElementsAre("a", "x", "b", "c"));
}

TEST(VariableListTest, RemovingStepsTheIteratorBack) {
    CVariableList list("L");
    for (int i = 0; i < 3; ++i) list.Add(value::CVal(i));
    list.MoveTo(2);
    list.RemoveCurrent();
    EXPECT_THAT(Texts(list), ElementsAre("0", "1"));
    EXPECT_EQ(list.GetIterator(), 1);
    list.MoveFirst();
    list.RemoveCurrent();
    EXPECT_EQ(list.GetIterator(), 0);
    list.RemoveCurrent();
    EXPECT_EQ(list.GetIterator(), 0);
    EXPECT_FALSE(list.IsIteratorValid());
    list.RemoveCurrent();
    EXPECT_EQ(list.GetIterator(), 0);
    list.RemoveAll();
    EXPECT_EQ(list.GetIterator(), -1);
}

TEST(VariableListTest, IteratorHasNoBounds) {
    CVariableList list("L");
    list.MoveTo(-5);
    EXPECT_EQ(list.GetIterator(), -5);
    EXPECT_FALSE(list.IsIteratorValid());
    list.MoveTo(2147483647);
    list.MoveNext();
    EXPECT_EQ(list.GetIterator(), -2147483647 - 1);
}

TEST(VariableListTest, ServerOperationsAnswerAsALocalVariable) {
    CVariableList list("L");
    value::CArchiveValueList values;
    EXPECT_EQ(list.IsReady(value::KindHour), 1);
    EXPECT_EQ(list.InitCalc(value::KindHour, 1), 1);
    EXPECT_EQ(list.SetLocked(true), 1);
    EXPECT_EQ(list.SetIgnoreUnknown(true), 0);
    EXPECT_EQ(list.FlushPuts(values), 0);
}

TEST(VariablePointerTest, PassesEveryOperationOn) {
    support::FakeScript script;
    CVariableLocal& target = script.Local("X", value::CVal(5));
    CVariablePointer& pointer = script.Pointer("P", "X");
    value::CVal value;
    EXPECT_EQ(pointer.GetKind(), VariablePointer);
    EXPECT_EQ(pointer.GetTargetKind(), VariableLocal);
    EXPECT_EQ(pointer.GetName(), "P");
    EXPECT_EQ(pointer.GetValue(value, value::KindCurrent, 0), 1);
    EXPECT_EQ(value::ValueToInt(value), 5);
    EXPECT_EQ(pointer.SetValue(value::CVal(6), value::KindDay), 1);
    EXPECT_EQ(pointer.SetStatus(4, value::KindDay), 1);
    EXPECT_EQ(pointer.SetTime(60, value::KindDay), 1);
    std::uint16_t word = 0;
    std::int64_t time = 0;
    EXPECT_EQ(pointer.GetStatus(&word, value::KindDay), 1);
    EXPECT_EQ(pointer.GetTime(&time, value::KindDay), 1);
    EXPECT_EQ(word, 4);
    EXPECT_EQ(time, 60);
    EXPECT_EQ(pointer.GetValueType(value::KindDay, 1), value::ValueType::Int);
    EXPECT_EQ(pointer.IsReady(value::KindHour), 1);
    EXPECT_EQ(pointer.SetLocked(true), 1);
    std::string text;
    EXPECT_EQ(pointer.GetNameValueText(text, value::KindCurrent), 1);
    EXPECT_EQ(text, "X:5");
    EXPECT_EQ(pointer.SetValueText("7", value::KindCurrent), 1);
    EXPECT_EQ(target.GetValueType(value::KindCurrent, 1), value::ValueType::Text);
    EXPECT_EQ(script.Error(), "0");
}

TEST(VariablePointerTest, TargetIsSeenInPlace) {
    support::FakeScript script;
    CVariableLocal& local = script.Local("a");
    local.SetValue(value::CVal(2), value::KindMonth);
    script.Pointer("p", "a.HREP");
    script.Pointer("q", "p");
    CVariable* pointer = script.Variables().Find("q");
    EXPECT_EQ(pointer->PeekValue(value::KindMonth), local.PeekValue(value::KindMonth));
    EXPECT_EQ(pointer->PeekValue(value::KindArchive), nullptr);
    EXPECT_EQ(script.Error(), "0");
    EXPECT_EQ(script.Pointer("r", "brak.HREP").PeekValue(value::KindCurrent), nullptr);
    EXPECT_EQ(script.Error(), "3 brak");
}

TEST(VariablePointerTest, MissingTargetGivesTheBaseAnswersAndError3) {
    support::FakeScript script;
    CVariablePointer& pointer = script.Pointer("P", "");
    value::CVal value;
    EXPECT_EQ(pointer.GetValue(value, value::KindCurrent, 0), 0);
    EXPECT_EQ(pointer.GetValueType(value::KindCurrent, 1), value::ValueType::Unreadable);
    EXPECT_EQ(pointer.IsReady(value::KindCurrent), 0);
    EXPECT_EQ(pointer.GetUnit(), "");
    EXPECT_EQ(pointer.GetTargetKind(), VariableNone);
    EXPECT_EQ(script.Error(), "3");
}

TEST(VariablePointerTest, PointersFollowEachOther) {
    support::FakeScript script;
    script.Local("X", value::CVal(5));
    script.Pointer("P", "X");
    CVariablePointer& second = script.Pointer("Q", "P");
    value::CVal value;
    EXPECT_EQ(second.GetValue(value, value::KindCurrent, 0), 1);
    EXPECT_EQ(value::ValueToInt(value), 5);
    EXPECT_EQ(second.GetTargetKind(), VariablePointer);
}

TEST(VariablePointerTest, TargetIsLookedUpWithoutAnError) {
    support::FakeScript script;
    CVariableLocal& local = script.Local("X");
    script.Pointer("P", "X.HREP");
    EXPECT_EQ(script.Pointer("Q", "P").LookUpTarget(), &local);
    EXPECT_EQ(script.Pointer("R", "NIE").LookUpTarget(), nullptr);
    EXPECT_EQ(script.Pointer("S", "S").LookUpTarget(), nullptr);
    EXPECT_EQ(script.Error(), "0");
}

TEST(VariablePointerTest, PointerThatReachesItselfEnds) {
    support::FakeScript script;
    CVariablePointer& pointer = script.Pointer("P", "Q");
    script.Pointer("Q", "P");
    value::CVal value;
    EXPECT_EQ(pointer.GetValue(value, value::KindCurrent, 0), 0);
    EXPECT_EQ(pointer.GetValueType(value::KindCurrent, 0), value::ValueType::Unreadable);
}

TEST(VariablePointerTest, PointersToOneVariableCopyItOntoItself) {
    support::FakeScript script;
    CVariableLocal& variable = script.Local("A", value::CVal(5));
    CVariablePointer& near = script.Pointer("V", "A");
    CVariablePointer& far = script.Pointer("W", "V");
    EXPECT_EQ(far.CopyFrom(&far, value::KindCurrent), 1);
    EXPECT_EQ(near.CopyFrom(&far, value::KindCurrent), 1);
    EXPECT_EQ(far.CopyFrom(&near, value::KindCurrent), 1);
    value::CVal value;
    variable.GetValue(value, value::KindCurrent, 0);
    EXPECT_EQ(support::Dump(value), "150:5");
    EXPECT_EQ(far.CopyFrom(&far, value::KindArchive), 0);
}

TEST(VariablePointerTest, PointersToACircleEnd) {
    support::FakeScript script;
    CVariablePointer& pointer = script.Pointer("W", "V");
    script.Pointer("V", "U");
    script.Pointer("U", "V");
    script.Pointer("S", "S");
    EXPECT_EQ(pointer.SetValue(value::CVal(1), value::KindCurrent), 0);
    EXPECT_EQ(script.Variables().Find("S")->CopyFrom(&pointer, value::KindCurrent), 0);
    EXPECT_EQ(script.Error(), "0");
}

TEST(VariablePointerTest, LongWayOfPointersHasAnEnd) {
    support::FakeScript script;
    CVariablePointer& first = script.Pointer("P0", "P1");
    for (int i = 1; i < 100; ++i) {
        script.Pointer("P" + std::to_string(i), "P" + std::to_string(i + 1));
    }
    EXPECT_EQ(first.SetValue(value::CVal(1), value::KindCurrent), 0);
    EXPECT_EQ(script.Error(), "3 P100");
    script.Local("P100");
    EXPECT_EQ(first.SetValue(value::CVal(1), value::KindCurrent), 1);
}

TEST(VariableFindTest, CutsAtTheFirstDotUnlessInFront) {
    support::FakeScript script;
    script.Local("A");
    script.Local(".B");
    EXPECT_EQ(FindVariable(script, "A.HREP.X")->GetName(), "A");
    EXPECT_EQ(FindVariable(script, ".B")->GetName(), ".B");
    EXPECT_EQ(FindVariable(script, ".B.HREP.X")->GetName(), ".B");
    EXPECT_EQ(script.Error(), "0");
    EXPECT_EQ(FindVariable(script, "a.HREP"), nullptr);
    EXPECT_EQ(script.Error(), "3 a");
}

TEST(VariableFindTest, FindsAmongManyByExactName) {
    support::FakeScript script;
    for (int i = 0; i < 1000; ++i) script.Local("V" + std::to_string(i), value::CVal(i));
    value::CVal value;
    FindVariable(script, "V777")->GetValue(value, value::KindCurrent, 0);
    EXPECT_EQ(value::ValueToInt(value), 777);
    int index = 0;
    for (const auto& variable : script.Variables()) {
        EXPECT_EQ(variable->GetName(), "V" + std::to_string(index++));
    }
}

TEST(VariableFindTest, GenerationTellsThatANameMayMeanAnother) {
    support::FakeScript script;
    const std::uint32_t empty = script.Variables().Generation();
    script.Local("a");
    const std::uint32_t one = script.Variables().Generation();
    EXPECT_NE(one, empty);
    script.Variables().Find("a")->SetValue(value::CVal(1), value::KindCurrent);
    EXPECT_EQ(script.Variables().Generation(), one);
    script.Variables().RemoveAll();
    const std::uint32_t removed = script.Variables().Generation();
    EXPECT_NE(removed, empty);
    EXPECT_NE(removed, one);
    script.Local("a");
    EXPECT_NE(script.Variables().Generation(), removed);
    EXPECT_NE(script.Variables().Generation(), one);
}

TEST(VariableStatusAndTimeTest, FollowTheSuffix) {
    support::FakeScript script;
    CVariableLocal& variable = script.Local("A");
    variable.SetStatus(8, value::KindDay);
    variable.SetTime(50, value::KindDay);
    variable.SetTime(-1, value::KindMonth);
    std::uint16_t word = 0;
    std::int64_t time = 0;
    EXPECT_TRUE(GetVariableStatus(script, "A.DREP", &word));
    EXPECT_EQ(word, 8);
    EXPECT_TRUE(GetVariableTime(script, "A.DREP", &time));
    EXPECT_EQ(time, 50);
    EXPECT_FALSE(GetVariableTime(script, "A.MREP", &time));
    EXPECT_FALSE(GetVariableTime(script, "A.ARCH", &time));
    EXPECT_FALSE(GetVariableStatus(script, "A.ARCH", &word));
    EXPECT_FALSE(GetVariableStatus(script, "B", &word));
    EXPECT_EQ(script.Error(), "3 B");
}

}  // namespace
}  // namespace kalvex::operands
