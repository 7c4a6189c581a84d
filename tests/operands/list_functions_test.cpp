#include "operands/ListFunctions.h"

#include <gtest/gtest.h>

#include "operands/FunctionFamilies.h"
#include "support/fake_script.h"
#include "support/value_dump.h"
#include "support/zone_scope.h"

namespace kalvex::operands {
namespace {

constexpr FunctionRow kRows[] = {
    {"FILL_IN_LIST", FillInListFunction, "", ""},
    {"CALC_IN_LIST", CalcInListFunction, "", ""},
};

class ListFunctionsTest : public testing::Test {
  protected:
    static const FunctionTable& Table() {
        static const FunctionTable table(kRows);
        return table;
    }
    // Type, content, status and time.
    static std::string Whole(const value::CVal& value) {
        return support::Dump(value) + " status " + std::to_string(value.GetStatus()) + " time " +
               std::to_string(value.GetTime());
    }

    support::ZoneScope zone{"Europe/Warsaw"};
    support::FakeScript script{Table()};
};

class ListFunctionsCalcTest : public ListFunctionsTest {
  protected:
    ListFunctionsCalcTest() { script.Local("R", value::CVal("stare")); }

    // The code, the error slot when there is an error, and the result variable.
    std::string Calc(std::string_view text) {
        script.ClearError();
        const std::string line = text::FromUtf8(text);
        const int code = static_cast<int>(CalcInList(script, line));
        std::string outcome = std::to_string(code);
        if (code == -100) outcome += " error " + script.Error();
        return outcome + " R " + support::Dump(script.Value("R"));
    }
    void Series() {
        script.List("LISTA", {support::Stamped(value::CVal(4), 100),
                              support::Stamped(value::CVal(9), 200, value::Status::Unknown),
                              support::Stamped(value::CVal(1), 300, value::Status::Alarm),
                              support::Stamped(value::CVal(2), 400)});
    }
};

TEST_F(ListFunctionsCalcTest, EveryFunctionCountsAllElementsWithoutAMask) {
    Series();
    EXPECT_EQ(Calc("LISTA.COUNT R"), "0 R 150:4");
    EXPECT_EQ(Calc("LISTA.SUM R"), "0 R 150:16");
    EXPECT_EQ(Calc("LISTA.MINIMUM R"), "0 R 150:1");
    EXPECT_EQ(Calc("LISTA.MAXIMUM R"), "0 R 150:9");
    EXPECT_EQ(Calc("LISTA.AVERAGE R"), "0 R 171:4.00");
}

TEST_F(ListFunctionsCalcTest, SumAndAverageAreMarkedAndMinimumIsTheElement) {
    Series();
    Calc("LISTA.SUM R");
    EXPECT_EQ(Whole(script.Value("R")), "150:16 status 32 time 1710050400");
    Calc("LISTA.AVERAGE R UNKNOWN");
    EXPECT_EQ(Whole(script.Value("R")), "171:2.3333333333333335 status 32 time 1710050400");
    Calc("LISTA.MINIMUM R");
    EXPECT_EQ(Whole(script.Value("R")), "150:1 status 4 time 300");
    Calc("LISTA.MAXIMUM R");
    EXPECT_EQ(Whole(script.Value("R")), "150:9 status 1 time 200");
    Calc("LISTA.COUNT R");
    EXPECT_EQ(Whole(script.Value("R")), "150:4 status 0 time 0");
}

TEST_F(ListFunctionsCalcTest, EarlierElementStaysOnTies) {
    script.List("L",
                {support::Stamped(value::CVal(3), 100), support::Stamped(value::CVal(3.0), 200)});
    Calc("L.MAXIMUM R");
    EXPECT_EQ(Whole(script.Value("R")), "150:3 status 0 time 100");
    Calc("L.MINIMUM R");
    EXPECT_EQ(Whole(script.Value("R")), "150:3 status 0 time 100");
}

TEST_F(ListFunctionsCalcTest, MaskLeavesElementsOut) {
    Series();
    EXPECT_EQ(Calc("LISTA.COUNT R UNKNOWN"), "0 R 150:3");
    EXPECT_EQ(Calc("LISTA.SUM R UNKNOWN"), "0 R 150:7");
    EXPECT_EQ(Calc("LISTA.COUNT R 5"), "0 R 150:2");
    script.Local("MASKA", value::CVal("ALARM"));
    EXPECT_EQ(Calc("LISTA.SUM R MASKA"), "0 R 150:15");
    EXPECT_EQ(Calc("LISTA.COUNT R 0"), "0 R 150:4");
}

TEST_F(ListFunctionsCalcTest, RangeIncludesItsBounds) {
    script.List("L", {support::Stamped(value::CVal(1), support::Gmt(2023, 12, 31, 22, 59, 59)),
                      support::Stamped(value::CVal(2), support::Gmt(2023, 12, 31, 23)),
                      support::Stamped(value::CVal(4), support::Gmt(2024, 1, 31, 23)),
                      support::Stamped(value::CVal(8), support::Gmt(2024, 1, 31, 23, 0, 1))});
    EXPECT_EQ(Calc("L.MAXIMUM R 0 FROM 2024 1 1 TO 2024 2 1"), "0 R 150:4");
    EXPECT_EQ(Calc("L.COUNT R 0 FROM 2024 1 1 TO 2024 2 1"), "0 R 150:2");
    EXPECT_EQ(Calc("L.COUNT R 0 FROM 2024 1 31 23 59 59 TO 2024 2 1 0 0 0"), "0 R 150:1");
    script.Local("OD", value::CVal(support::Gmt(2024, 1, 31, 23)));
    EXPECT_EQ(Calc("L.COUNT R 0 FROM OD TO OD"), "0 R 150:1");
    EXPECT_EQ(Calc("L.COUNT R 0 FROM OD TO TIME"), "0 R 150:2");
}

TEST_F(ListFunctionsCalcTest, ReversedRangeWritesNothing) {
    Series();
    EXPECT_EQ(Calc("LISTA.SUM R 0 FROM 2024 2 1 TO 2024 1 1"), "-1 R 190:stare");
    EXPECT_EQ(Calc("LISTA.COUNT R 0 FROM 2024 2 1 TO 2024 1 1"), "-1 R 190:stare");
    EXPECT_EQ(Calc("LISTA.BZDURA R 0 FROM 2024 2 1 TO 2024 1 1"), "-1 R 190:stare");
    EXPECT_EQ(Calc("BRAK.SUM R 0 FROM 2024 2 1 TO 2024 1 1"), "-100 error 3 BRAK R 190:stare");
}

TEST_F(ListFunctionsCalcTest, NothingComputedWritesAValueWithoutContent) {
    script.List("LISTA");
    EXPECT_EQ(Calc("LISTA.SUM R"), "-2 R 255:");
    EXPECT_EQ(Calc("LISTA.COUNT R"), "0 R 150:0");
    EXPECT_EQ(Calc("LISTA.MINIMUM R"), "-2 R 255:");
    EXPECT_EQ(Calc("LISTA.MAXIMUM R"), "-2 R 255:");
    EXPECT_EQ(Calc("LISTA.AVERAGE R"), "-2 R 255:");
    script.List("INNA", {support::Stamped(value::CVal(1), 0, value::Status::Unknown)});
    EXPECT_EQ(Calc("INNA.AVERAGE R UNKNOWN"), "-2 R 255:");
}

TEST_F(ListFunctionsCalcTest, ResultMayBeAKindOfAVariable) {
    Series();
    EXPECT_EQ(Calc("LISTA.SUM R.DREP"), "0 R 190:stare");
    EXPECT_EQ(support::Dump(script.Value("R", value::KindDay)), "150:16");
    // The hour value of a local variable is stored, whatever the answer.
    EXPECT_EQ(Calc("LISTA.SUM R.HREP"), "0 R 190:stare");
    EXPECT_EQ(support::Dump(script.Value("R", value::KindHour)), "150:16");
}

TEST_F(ListFunctionsCalcTest, ResultMayBeRemoteOrAPointerToARemoteVariable) {
    Series();
    support::HandRemote& remote = script.Remote("Z");
    script.Pointer("W", "Z");
    Calc("LISTA.SUM Z");
    EXPECT_EQ(support::Dump(remote.value), "150:16");
    Calc("LISTA.COUNT W");
    EXPECT_EQ(support::Dump(remote.value), "150:4");
}

TEST_F(ListFunctionsCalcTest, PointerToALocalVariableIsRefused) {
    Series();
    script.Pointer("W", "R");
    EXPECT_EQ(Calc("LISTA.SUM W"), "-100 error 21 W R 190:stare");
    script.List("L2");
    EXPECT_EQ(Calc("LISTA.SUM L2"), "-100 error 21 L2 R 190:stare");
    script.Pointer("NIGDZIE", "BRAK");
    EXPECT_EQ(Calc("LISTA.SUM NIGDZIE"), "-100 error 21 NIGDZIE R 190:stare");
}

TEST_F(ListFunctionsCalcTest, NamesThatAreWrong) {
    Series();
    script.Pointer("W", "LISTA");
    EXPECT_EQ(Calc("BRAK.SUM R"), "-100 error 3 BRAK R 190:stare");
    EXPECT_EQ(Calc("R.SUM R"), "-100 error 21 R R 190:stare");
    EXPECT_EQ(Calc("W.SUM R"), "-100 error 21 W R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM BRAK"), "-100 error 3 BRAK R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM"), "-100 error 3 R 190:stare");
    EXPECT_EQ(Calc(""), "-100 error 3 R 190:stare");
    // The later error takes the place of the earlier one.
    EXPECT_EQ(Calc("BRAK.SUM BRAK2"), "-100 error 3 BRAK2 R 190:stare");
}

TEST_F(ListFunctionsCalcTest, FunctionIsToldByTheEndOfItsToken) {
    script.List("L", {value::CVal(1)});
    script.List("LL", {value::CVal(2)});
    script.List("LLL", {value::CVal(3)});
    EXPECT_EQ(Calc("L.COUNT R"), "0 R 150:1");
    EXPECT_EQ(Calc("L.MINIMUM R"), "0 R 150:1");
    EXPECT_EQ(Calc("LLL.SUM R"), "0 R 150:3");
    EXPECT_EQ(Calc("LLL.COS.SUM R"), "0 R 150:3");
    EXPECT_EQ(Calc("L.SUM R"), "-100 error 22 L.SUM R 255:");
    EXPECT_EQ(Calc("LL.SUM R"), "-100 error 22 LL.SUM R 255:");
    EXPECT_EQ(Calc("LLL.BZDURA R"), "-100 error 22 LLL.BZDURA R 255:");
    EXPECT_EQ(Calc("LLL.sum R"), "-100 error 22 LLL.sum R 255:");
    EXPECT_EQ(Calc("LLL R"), "-100 error 22 LLL R 255:");
}

TEST_F(ListFunctionsCalcTest, MaskAndRangeThatCannotBeRead) {
    Series();
    EXPECT_EQ(Calc("LISTA.SUM R BZDURA"), "-100 error 22 BZDURA R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM R 0 OD 2024"), "-100 error 1 OD R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM R 0 from 2024"), "-100 error 1 from R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM R 0 FROM"), "-100 error 19 FROM R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM R 0 FROM rok TO 2025"), "-100 error 19 FROM rok TO 2025 R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM R 0 FROM 2024 13 TO 2025"),
              "-100 error 19 FROM 2024 13 TO 2025 R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM R 0 FROM 2024"), "-100 error 22 TO R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM R 0 FROM 2024 1 1 DO 2025"), "-100 error 1 DO R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM R 0 FROM 2024 TO"), "-100 error 19 TO R 190:stare");
    EXPECT_EQ(Calc("LISTA.SUM R 0 FROM 2024 TO rok 7"), "-100 error 19 TO rok 7 R 190:stare");
}

TEST_F(ListFunctionsCalcTest, NamesAreLookedUpAfterABadMask) {
    Series();
    EXPECT_EQ(Calc("LISTA.SUM BRAK BZDURA"), "-100 error 3 BRAK R 190:stare");
    EXPECT_EQ(Calc("R.SUM R 0 OD"), "-100 error 21 R R 190:stare");
}

TEST_F(ListFunctionsCalcTest, FunctionGivesTheCode) {
    Series();
    script.List("PUSTA");
    EXPECT_EQ(script.Evaluate("CALC_IN_LIST LISTA.SUM R UNKNOWN"), "150:0");
    EXPECT_EQ(support::Dump(script.Value("R")), "150:7");
    EXPECT_EQ(script.Evaluate("CALC_IN_LIST LISTA.SUM R 0 FROM 2024 2 1 TO 2024 1 1"), "150:-1");
    EXPECT_EQ(script.Evaluate("CALC_IN_LIST PUSTA.SUM R"), "150:-2");
    EXPECT_EQ(script.Evaluate("CALC_IN_LIST BRAK.SUM R"), "failed 3 BRAK");
}

class ListFunctionsFillTest : public ListFunctionsTest {
  protected:
    ListFunctionsFillTest() : list(script.List("L")) {
        script.Local("T1", value::CVal(support::Gmt(2024, 3, 10, 6, 7, 8)));
        script.Local("T2", value::CVal(support::Gmt(2024, 3, 10, 8, 7, 8)));
    }

    // The error slot, or the times of the elements from the second hour of 2024-03-10 GMT on.
    std::string Fill(std::string_view text) {
        script.ClearError();
        const std::string line = text::FromUtf8(text);
        if (!FillInList(script, line)) return "failed " + script.Error();
        std::string times;
        for (const value::CVal& element : list.Elements()) times += Whole(element) + "; ";
        return times;
    }
    static std::string Five(std::int64_t time, int status = 0) {
        return "171:5.00 status " + std::to_string(status) + " time " + std::to_string(time) + "; ";
    }

    CVariableList& list;
};

TEST_F(ListFunctionsFillTest, OneElementForEachHour) {
    EXPECT_EQ(Fill("L 5 0 T1 T2 HREP"), Five(support::Gmt(2024, 3, 10, 6)) +
                                            Five(support::Gmt(2024, 3, 10, 7)) +
                                            Five(support::Gmt(2024, 3, 10, 8)));
    EXPECT_EQ(list.GetIterator(), -1);
}

TEST_F(ListFunctionsFillTest, HoursAreRealOnesWhenTheClockIsPutBack) {
    script.Local("OD", value::CVal(support::Gmt(2024, 10, 26, 23, 30)));
    script.Local("DO", value::CVal(support::Gmt(2024, 10, 27, 2)));
    EXPECT_EQ(Fill("L 5 0 OD DO HREP"),
              Five(support::Gmt(2024, 10, 26, 23)) + Five(support::Gmt(2024, 10, 27, 0)) +
                  Five(support::Gmt(2024, 10, 27, 1)) + Five(support::Gmt(2024, 10, 27, 2)));
}

TEST_F(ListFunctionsFillTest, DaysFollowTheLocalClock) {
    script.Local("OD", value::CVal(support::Gmt(2024, 3, 30, 12)));
    script.Local("DO", value::CVal(support::Gmt(2024, 4, 1, 12)));
    EXPECT_EQ(Fill("L 5 0 OD DO DREP"), Five(support::Gmt(2024, 3, 29, 23)) +
                                            Five(support::Gmt(2024, 3, 30, 23)) +
                                            Five(support::Gmt(2024, 3, 31, 22)));
}

TEST_F(ListFunctionsFillTest, Months) {
    script.Local("OD", value::CVal(support::Gmt(2024, 1, 31, 12)));
    script.Local("DO", value::CVal(support::Gmt(2024, 4, 1, 12)));
    EXPECT_EQ(Fill("L 5 0 OD DO MREP"),
              Five(support::Gmt(2023, 12, 31, 23)) + Five(support::Gmt(2024, 1, 31, 23)) +
                  Five(support::Gmt(2024, 2, 29, 23)) + Five(support::Gmt(2024, 3, 31, 22)));
}

TEST_F(ListFunctionsFillTest, YearsAndOperandsAreTimesToo) {
    EXPECT_EQ(Fill("L 5 0 2024 T1.FIRSTLOCALYEAR DREP"), Five(support::Gmt(2023, 12, 31, 23)));
}

TEST_F(ListFunctionsFillTest, ElementsTakeTheStatus) {
    EXPECT_EQ(Fill("L 5 ALARM T1 T1 HREP"), Five(support::Gmt(2024, 3, 10, 6), 4));
    EXPECT_EQ(Fill("L 5 33 T1 T1 HREP"),
              Five(support::Gmt(2024, 3, 10, 6), 4) + Five(support::Gmt(2024, 3, 10, 6), 33));
}

TEST_F(ListFunctionsFillTest, ValueLosesItsOwnStatusAndTime) {
    script.Local("W", support::Stamped(value::CVal("x"), 9, 7));
    EXPECT_EQ(Fill("L W 0 T1 T1 HREP"), "190:x status 0 time 1710050400; ");
}

TEST_F(ListFunctionsFillTest, NumberTakesTheTypeOfTheCurrentElement) {
    list.Add(value::CVal(1));
    list.MoveFirst();
    EXPECT_EQ(Fill("L 7.9 0 T1 T1 HREP"),
              "150:1 status 0 time 0; 150:7 status 0 time 1710050400; ");
}

TEST_F(ListFunctionsFillTest, StartAfterEndAddsNothing) {
    EXPECT_EQ(Fill("L 5 0 T2 T1 HREP"), "");
    EXPECT_EQ(Fill("L 5 0 T2 T1 DREP"), Five(support::Gmt(2024, 3, 9, 23)));
}

TEST_F(ListFunctionsFillTest, Failures) {
    script.Local("A", value::CVal(1));
    script.Pointer("W", "L");
    EXPECT_EQ(Fill("BRAK 5 0 T1 T2 HREP"), "failed 3 BRAK");
    EXPECT_EQ(Fill("A 5 0 T1 T2 HREP"), "failed 21 A");
    EXPECT_EQ(Fill("W 5 0 T1 T2 HREP"), "failed 21 W");
    EXPECT_EQ(Fill("L BRAK 0 T1 T2 HREP"), "failed 22 BRAK");
    EXPECT_EQ(Fill("L 5 BZDURA T1 T2 HREP"), "failed 22 BZDURA");
    EXPECT_EQ(Fill("L 5 0 BRAK T2 HREP"), "failed 22 T2");
    EXPECT_EQ(Fill("L 5 0 T1 BRAK HREP"), "failed 22 BRAK");
    EXPECT_EQ(Fill("L 5 0 T1 1969 HREP"), "failed 22 1969");
    EXPECT_EQ(Fill("L 5 0 T1 T2 SREP"), "failed 22 SREP");
    EXPECT_EQ(Fill("L 5 0 T1 T2 hrep"), "failed 22 hrep");
    EXPECT_EQ(Fill("L 5 0 T1 T2"), "failed 22");
    EXPECT_EQ(Fill("L 5 0"), "failed 22");
    EXPECT_EQ(Fill("L"), "failed 22");
    EXPECT_EQ(Fill(""), "failed 3");
    EXPECT_TRUE(list.Elements().empty());
}

TEST_F(ListFunctionsFillTest, FunctionGivesOne) {
    EXPECT_EQ(script.Evaluate("FILL_IN_LIST L 5 0 T1 T2 HREP"), "150:1");
    EXPECT_EQ(list.Elements().size(), 3u);
    EXPECT_EQ(script.Evaluate("FILL_IN_LIST L 5 0 T1 T2 SREP"), "failed 22 SREP");
}

}  // namespace
}  // namespace kalvex::operands
