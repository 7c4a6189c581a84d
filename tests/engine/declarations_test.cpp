#include <gmock/gmock.h>

#include "support/script_world.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

class DeclarationsTest : public support::ScriptWorld {};

TEST_F(DeclarationsTest, LocalWithoutAValue) {
    CKalvexDoc& document = Run("LOCAL x ; opis\nLOCAL y");
    EXPECT_EQ(Value(document, "x"), "255:");
    EXPECT_EQ(Value(document, "y"), "255:");
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
}

TEST_F(DeclarationsTest, LocalWithAValueTakesItsType) {
    CKalvexDoc& document =
        Run("LOCAL a = 5\nLOCAL b = \"tekst\"\nLOCAL c = a\nLOCAL d = a > 3\nLOCAL e = 2 ; uwaga");
    EXPECT_EQ(Value(document, "a"), "171:5.00");
    EXPECT_EQ(Value(document, "b"), "190:tekst");
    EXPECT_EQ(Value(document, "c"), "171:5.00");
    EXPECT_EQ(Value(document, "d"), "150:1");
    EXPECT_EQ(Value(document, "e"), "171:2.00");
}

TEST_F(DeclarationsTest, LocalWithoutTheEqualsSignFailsOnEachRetry) {
    CKalvexDoc& document = Run("LOCAL x 5");
    EXPECT_EQ(Value(document, "x"), "255:");
    EXPECT_EQ(Error(document), "5");
    EXPECT_EQ(document.Variables().GetSize(), 1u);
}

TEST_F(DeclarationsTest, LocalWithABadValueNamesItButKeepsTheFirstError) {
    CKalvexDoc& document = Run("LOCAL x = \"a\" + 1");
    EXPECT_EQ(document.State().m_nCurrentLine, 0);
    EXPECT_EQ(Error(document), "3 a");
    EXPECT_EQ(Value(document, "x"), "255:");
}

TEST_F(DeclarationsTest, ValueThatLeavesNoErrorIsNamed) {
    CKalvexDoc& document = Run("LOCAL x =   1e5 + 1  ");
    EXPECT_EQ(Error(document), "16 1e5 + 1");
}

TEST_F(DeclarationsTest, AgainDeclaredKeepsKindAndGetsTheValue) {
    CKalvexDoc& document = Run("LIST x\nLOCAL x = 1\nLIST x");
    EXPECT_EQ(document.Variables().Find("x")->GetKind(), operands::VariableList);
    EXPECT_EQ(Value(document, "x"), "[]");
    EXPECT_EQ(document.State().m_nCurrentLine, 3);
    EXPECT_EQ(document.Variables().GetSize(), 1u);
}

TEST_F(DeclarationsTest, DotInANameStopsTheScript) {
    for (const char* line : {"LOCAL a.b", "LIST a.b", "POINTER a.b", "REMOTE a.b srv@v"}) {
        CKalvexDoc& document = Run(line);
        EXPECT_EQ(Error(document), "23 a.b") << line;
        EXPECT_EQ(document.GetStateWord(), StatePaused) << line;
        EXPECT_EQ(document.State().m_nCurrentLine, 0) << line;
        EXPECT_EQ(Log().back(),
                  "main.kx : Linia 1 - Deklarowana nazwa zmiennej zawiera znak kropki : a.b");
    }
}

TEST_F(DeclarationsTest, DotInFrontIsLetThrough) {
    CKalvexDoc& document = Run("LOCAL .A = 4\nLOCAL B = .A");
    EXPECT_EQ(Value(document, ".A"), "171:4.00");
    EXPECT_EQ(Value(document, "B"), "171:4.00");
}

TEST_F(DeclarationsTest, NamesAreCaseSensitive) {
    CKalvexDoc& document = Run("LOCAL a = 1\nLOCAL A = 2");
    EXPECT_EQ(Value(document, "a"), "171:1.00");
    EXPECT_EQ(Value(document, "A"), "171:2.00");
}

TEST_F(DeclarationsTest, RemoteBindsOnce) {
    CKalvexDoc& document = Run("REMOTE a srv@v\nREMOTE a srv@w");
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
    EXPECT_EQ(document.Variables().GetSize(), 1u);
    EXPECT_THAT(sources.calls, ElementsAre("create srv@v"));
}

TEST_F(DeclarationsTest, RemoteWithoutAtStopsAndLeavesNoVariable) {
    CKalvexDoc& document = Run("REMOTE a srv");
    EXPECT_EQ(Error(document), "2 srv");
    EXPECT_EQ(document.GetStateWord(), StatePaused);
    EXPECT_EQ(document.Variables().GetSize(), 0u);
}

TEST_F(DeclarationsTest, RemoteTargetMayBeQuoted) {
    Run("REMOTE a \"srv@Z 1 PRZEPŁYW\"\nREMOTE b \"srv@x@y\"");
    EXPECT_THAT(sources.calls, ElementsAre("create srv@Z 1 PRZEPŁYW", "create srv@x@y"));
}

TEST_F(DeclarationsTest, RemoteInheritsIgnoreUnknownButNoLock) {
    CKalvexDoc& document = Open("REMOTE a srv@v");
    document.IgnoreUnknown(true);
    document.Start();
    Tick(1);
    const auto& remote = static_cast<support::HandRemote&>(*document.Variables().Find("a"));
    EXPECT_TRUE(remote.ignoreUnknown);
    EXPECT_FALSE(remote.locked);
}

TEST_F(DeclarationsTest, RemoteWithoutSourcesFails) {
    services.sources = nullptr;
    CKalvexDoc& document = Run("REMOTE a srv@v");
    EXPECT_EQ(Error(document), "11");
}

TEST_F(DeclarationsTest, SetConvertsALiteralToTheTypeThatIsThere) {
    CKalvexDoc& document = Run(
        "LOCAL t = \"x\"\nSET t = 5\nLOCAL c = 1 > 0\nSET c = 12.7\nLOCAL n\nSET n = 5\nSET c = n");
    EXPECT_EQ(Value(document, "t"), "190:5.00");
    EXPECT_EQ(Value(document, "n"), "171:5.00");
    EXPECT_EQ(Value(document, "c"), "171:5.00");
    EXPECT_EQ(Value(Run("LOCAL c = 1 > 0\nSET c = 12.7"), "c"), "150:12");
}

TEST_F(DeclarationsTest, SetWithoutTheEqualsSign) {
    EXPECT_EQ(Error(Run("LOCAL a\nSET a 5")), "5");
    EXPECT_EQ(Error(Run("LOCAL a\nSET a")), "5");
    EXPECT_EQ(Error(Run("LOCAL a\nSET a == 5")), "5");
}

TEST_F(DeclarationsTest, SetOfAnUnknownVariableNamesTheToken) {
    EXPECT_EQ(Error(Run("SET brak.HREP = 5")), "3 brak.HREP");
}

TEST_F(DeclarationsTest, SetReportsWhatTheEvaluationLeft) {
    EXPECT_EQ(Error(Run("LOCAL a\nSET a = brak")), "3 brak");
    EXPECT_EQ(Error(Run("LOCAL a\nSET a = 1e5 + 1")), "11");
    EXPECT_EQ(Error(Run("LOCAL a\nSET a = (1")), "14");
}

TEST_F(DeclarationsTest, SetOfTheTimeLeavesTheValue) {
    CKalvexDoc& document = Run(
        "LOCAL x = 7\nSET x.TIMESTAMP = 1000000000\nSET x.HREP = 5\nSET x.HREP.TIMESTAMP = 60.9");
    value::CVal value;
    document.Variables().Find("x")->GetValue(value, value::KindCurrent, 1);
    EXPECT_EQ(value::ValueToText(value), "7.00");
    EXPECT_EQ(value.GetTime(), 1000000000);
    document.Variables().Find("x")->GetValue(value, value::KindHour, 1);
    EXPECT_EQ(value::ValueToText(value), "5.00");
    EXPECT_EQ(value.GetTime(), 60);
}

TEST_F(DeclarationsTest, TimestampInFrontIsAName) {
    EXPECT_EQ(Error(Run("SET .TIMESTAMP = 5")), "3 .TIMESTAMP");
}

TEST_F(DeclarationsTest, SetReachesTheKindOfTheName) {
    CKalvexDoc& document = Run("LOCAL x\nSET x.DREP = 5\nSET x.hrep = 6\nSET x.XYZ = 7");
    EXPECT_EQ(Value(document, "x", value::KindDay), "171:5.00");
    EXPECT_EQ(Value(document, "x", value::KindHour), "171:6.00");
    EXPECT_EQ(Value(document, "x"), "255:");
    EXPECT_EQ(document.State().m_nCurrentLine, 4);
}

TEST_F(DeclarationsTest, AssignmentCarriesStatusAndTime) {
    CKalvexDoc& document = Run("LOCAL a = 1\nLOCAL b\nSET a.TIMESTAMP = 99999\nSET b = a");
    value::CVal value;
    document.Variables().Find("b")->GetValue(value, value::KindCurrent, 1);
    EXPECT_EQ(value.GetTime(), 99999);
}

TEST_F(DeclarationsTest, CopyTakesTheKindOfTheSource) {
    CKalvexDoc& document = Run("LOCAL a\nLOCAL b\nSET a.DREP = 3\nCOPY a.DREP b");
    EXPECT_EQ(Value(document, "b", value::KindDay), "171:3.00");
    EXPECT_EQ(Value(document, "b"), "255:");
}

TEST_F(DeclarationsTest, CopyNamesWhatIsMissing) {
    EXPECT_EQ(Error(Run("LOCAL a\nCOPY a")), "3");
    EXPECT_EQ(Error(Run("COPY")), "3");
    EXPECT_EQ(Error(Run("LOCAL b\nCOPY a.HREP b")), "3 a.HREP");
    EXPECT_EQ(Error(Run("LOCAL a\nCOPY a b")), "3 b");
    EXPECT_EQ(Error(Run("COPY a b")), "3 a");
}

TEST_F(DeclarationsTest, PointerTakesTheEvaluatedText) {
    CKalvexDoc& document =
        Run("POINTER p\nLOCAL q = \"cel\"\nSETPTR p = q\nLOCAL cel = 8\nLOCAL r = p");
    EXPECT_EQ(Value(document, "r"), "171:8.00");
    const auto& pointer = static_cast<operands::CVariablePointer&>(*document.Variables().Find("p"));
    EXPECT_EQ(pointer.GetTargetName(), "cel");
}

TEST_F(DeclarationsTest, PointerMayBeSetBeforeItsTargetExists) {
    EXPECT_EQ(Value(Run("POINTER p\nSETPTR p = \"x\"\nLOCAL x = 2\nSET p = 9"), "x"), "171:9.00");
}

TEST_F(DeclarationsTest, SetPtrFailures) {
    EXPECT_EQ(Error(Run("POINTER p\nSETPTR p \"x\"")), "5");
    EXPECT_EQ(Error(Run("SETPTR p = \"x\"")), "3 p");
    EXPECT_EQ(Error(Run("LOCAL p\nSETPTR p = \"x\"")), "3 p");
    EXPECT_EQ(Error(Run("POINTER p\nSETPTR p = 1e5 + 1")), "16 1e5 + 1");
}

TEST_F(DeclarationsTest, CreateVarListEntersLocalsAndRemotes) {
    CKalvexDoc& document =
        Run("POINTER p\nLOCAL Ala\nLIST l\nLOCAL ola\nREMOTE r srv@v\nCREATE_VAR_LIST l *\n"
            "LIST m\nCREATE_VAR_LIST m \"?LA\"\nCREATE_VAR_LIST m \"?LA\"\nLIST n\nCREATE_VAR_LIST "
            "n ol?");
    EXPECT_EQ(Value(document, "l"), "[Ala ola r]");
    EXPECT_EQ(Value(document, "m"), "[Ala ola Ala ola]");
    EXPECT_EQ(Value(document, "n"), "[ola]");
}

TEST_F(DeclarationsTest, CreateVarListFailures) {
    EXPECT_EQ(Error(Run("CREATE_VAR_LIST l *")), "3 l");
    EXPECT_EQ(Error(Run("LOCAL l\nCREATE_VAR_LIST l *")), "3 l");
    EXPECT_EQ(Error(Run("LIST l\nCREATE_VAR_LIST l wzor")), "3 wzor");
}

}  // namespace
}  // namespace kalvex::engine
