// String functions as a script calls them, long texts, number formats and patterns. Each row
// compares what it got with what is known beforehand; the program fails when one differs.

#include <cstdio>
#include <iterator>
#include <string>
#include <string_view>

#include "checked_rows.h"
#include "language/Functions.h"
#include "operands/NumberFormat.h"
#include "support/fake_script.h"
#include "text/PatternMatch.h"

namespace kalvex::bench {
namespace {

void Expect(std::string_view got, std::string_view wanted, std::string_view row) {
    if (got == wanted) return;
    std::fprintf(stderr, "%.*s: %.60s instead of %.60s\n", static_cast<int>(row.size()), row.data(),
                 std::string(got).c_str(), std::string(wanted).c_str());
    g_wrong = true;
}

std::string Evaluate(support::FakeScript& script, std::string_view expression) {
    value::CVal value;
    std::string_view text = expression;
    if (!operands::EvaluateExpression(script, text, value, value::ValueType::Text)) return "failed";
    return value::ValueToText(value);
}

struct Row {
    const char* expression;
    const char* result;
};

constexpr Row kRows[] = {
    {"TO_STRING LICZBA \"%08.3f\"", "0012.346"},
    {"TO_FLOAT \"12.5 bar\"", "12.50"},
    {"STRING_LEN NAZWA", "17"},
    {"STRING_MAKE_UPPER NAZWA", "STACJA/GAZ/ODORY1"},
    {"STRING_APPEND NAZWA \".HREP\"", "Stacja/Gaz/Odory1.HREP"},
    {"STRING_TRIM \"  tekst  \" \" \"", "tekst"},
    {"STRING_SPAN_EXCLUDING NAZWA \"/\"", "Stacja"},
    {"STRING_MID NAZWA 7 3", "Gaz"},
    {"STRING_FIND NAZWA \"Gaz\" 0 > 2", "1"},
    {"STRING_COMPARE_NO_CASE NAZWA \"stacja/gaz/odory1\"", "0.00"},
};

void Function(benchmark::State& state) {
    const Row& row = kRows[state.range(0)];
    support::FakeScript script(language::Functions());
    script.Local("NAZWA", value::CVal("Stacja/Gaz/Odory1"));
    script.Local("LICZBA", value::CVal(12.3456));
    std::string result;
    for (auto _ : state) result = Evaluate(script, row.expression);
    Expect(result, row.result, row.expression);
    state.SetLabel(row.expression);
}
BENCHMARK(Function)->DenseRange(0, std::size(kRows) - 1);

// All pieces of a text, one call a piece, as a script takes it apart.
void TokenizeText(benchmark::State& state) {
    const auto pieces = static_cast<int>(state.range(0));
    std::string text;
    for (int i = 0; i < pieces; ++i) text += "12.5;";
    support::FakeScript script(language::Functions());
    script.Local("TEKST", value::CVal(text));
    operands::CVariableLocal& position = script.Local("P");
    int found = 0;
    for (auto _ : state) {
        position.SetValue(value::CVal(0), value::KindCurrent);
        for (found = 0; Evaluate(script, "TOKENIZE TEKST ; P") == "12.5"; ++found) continue;
    }
    Expect(std::to_string(found), std::to_string(pieces), "TOKENIZE");
    state.SetItemsProcessed(state.iterations() * pieces);
}
BENCHMARK(TokenizeText)->Arg(10)->Arg(100)->Arg(1000);

void JoinList(benchmark::State& state) {
    const auto elements = static_cast<int>(state.range(0));
    support::FakeScript script(language::Functions());
    operands::CVariableList& list = script.List("L");
    std::string wanted;
    for (int i = 0; i < elements; ++i) {
        list.Add(value::CVal("12.5"));
        wanted += i == 0 ? "12.5" : ";12.5";
    }
    std::string result;
    for (auto _ : state) result = Evaluate(script, "JOIN L \";\"");
    Expect(result, wanted, "JOIN");
    state.SetItemsProcessed(state.iterations() * elements);
}
BENCHMARK(JoinList)->Arg(10)->Arg(1000)->Arg(100000);

void NumberFormat(benchmark::State& state) {
    const value::CVal value(1234.5678);
    std::string text;
    for (auto _ : state) text = operands::FormatNumber(value, "%12.3f");
    Expect(text, "    1234.568", "%12.3f");
}
BENCHMARK(NumberFormat);

// A name as CREATE_VAR_LIST meets it, and a text that makes every star go back.
void Pattern(benchmark::State& state) {
    bool name = false;
    bool otherName = true;
    for (auto _ : state) {
        name = text::CompareWithPattern("CISNIENIE_WEJ_2", "cisn*_wej_?",
                                        text::PatternOption::VariableNames);
        otherName =
            text::CompareWithPattern("PRZEPLYW_WEJ_2", "cisn*", text::PatternOption::VariableNames);
    }
    Expect(name && !otherName ? "both right" : "wrong", "both right", "pattern");
}
BENCHMARK(Pattern);

void PatternOfManyStars(benchmark::State& state) {
    const std::string text(static_cast<std::size_t>(state.range(0)), 'a');
    bool matched = true;
    for (auto _ : state) {
        matched = text::CompareWithPattern(text, "*a*a*a*a*a*a*a*a*b",
                                           text::PatternOption::VariableNames);
    }
    Expect(matched ? "matched" : "no match", "no match", "pattern of many stars");
    state.SetComplexityN(state.range(0));
}
BENCHMARK(PatternOfManyStars)->RangeMultiplier(10)->Range(100, 100000)->Complexity(benchmark::oN);

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    return kalvex::bench::RunRows(argc, argv);
}
