// Aggregates over lists of 10 to 1000000 elements, as properties and as CALC_IN_LIST, series made
// by FILL_IN_LIST, and lists that grow and shrink at either end and on a walk. Each row compares
// its result with the one worked out beforehand; the program fails when one differs. The time of a
// row grows with the number of elements alone.

#include <cstdio>
#include <iterator>
#include <string_view>

#include "checked_rows.h"
#include "operands/ListFunctions.h"
#include "support/fake_script.h"
#include "support/zone_scope.h"

namespace kalvex::bench {
namespace {

constexpr std::int64_t kStart = 1710050400;

// The numbers from 1 to n as doubles, a second apart; every tenth one is UNKNOWN.
void Fill(operands::CVariableList& list, std::int64_t n) {
    for (std::int64_t i = 1; i <= n; ++i) {
        value::CVal value(static_cast<double>(i));
        value.SetStatus(i % 10 == 0 ? value::Status::Unknown : 0);
        value.SetTime(kStart + i);
        list.Add(value);
    }
}

double SumTo(double n) {
    return n * (n + 1) / 2;
}

// What is left when every tenth number is taken out.
double SumOfKnown(double n) {
    return SumTo(n) - 10 * SumTo(n / 10);
}

struct Property {
    const char* text;
    double (*result)(double n);
};

constexpr Property kProperties[] = {
    {"LISTA.COUNT", [](double n) { return n; }},
    {"LISTA.SUM", SumOfKnown},
    {"LISTA.MINIMUM", [](double) { return 1.0; }},
    {"LISTA.MAXIMUM", [](double n) { return n - 1; }},
    {"LISTA.AVERAGE", [](double n) { return SumOfKnown(n) / (n - n / 10); }},
};

void ListProperty(benchmark::State& state) {
    const Property& property = kProperties[state.range(0)];
    support::FakeScript script;
    Fill(script.List("LISTA"), state.range(1));
    value::CVal value;
    for (auto _ : state)
        operands::EvaluateOperand(script, property.text, value, value::ValueType::Double, true);
    Expect(value::ValueToDouble(value), property.result(static_cast<double>(state.range(1))),
           property.text);
    state.SetItemsProcessed(state.iterations() * state.range(1));
    state.SetLabel(property.text);
}
BENCHMARK(ListProperty)
    ->ArgsProduct({benchmark::CreateDenseRange(0, std::size(kProperties) - 1, 1),
                   {10, 1000, 100000, 1000000}});

struct Calculation {
    const char* text;
    double (*result)(double n);
};

constexpr Calculation kCalculations[] = {
    {"LISTA.COUNT R UNKNOWN", [](double n) { return n - n / 10; }},
    {"LISTA.SUM R", SumTo},
    {"LISTA.SUM R UNKNOWN", SumOfKnown},
    {"LISTA.MAXIMUM R 0 FROM POCZATEK TO POLOWA", [](double n) { return n / 2; }},
    {"LISTA.AVERAGE R 0 FROM POCZATEK TO POLOWA", [](double n) { return SumTo(n / 2) / (n / 2); }},
};

void ListCalculation(benchmark::State& state) {
    const Calculation& calculation = kCalculations[state.range(0)];
    const std::int64_t n = state.range(1);
    support::FakeScript script;
    Fill(script.List("LISTA"), n);
    script.Local("R");
    script.Local("POCZATEK", value::CVal(kStart));
    script.Local("POLOWA", value::CVal(kStart + n / 2));
    for (auto _ : state) operands::CalcInList(script, calculation.text);
    Expect(value::ValueToDouble(script.Value("R")), calculation.result(static_cast<double>(n)),
           calculation.text);
    state.SetItemsProcessed(state.iterations() * n);
    state.SetLabel(calculation.text);
}
BENCHMARK(ListCalculation)
    ->ArgsProduct({benchmark::CreateDenseRange(0, std::size(kCalculations) - 1, 1),
                   {10, 1000, 100000, 1000000}});

// One element an hour.
void ListSeries(benchmark::State& state) {
    const std::int64_t hours = state.range(0);
    support::FakeScript script;
    operands::CVariableList& list = script.List("LISTA");
    script.Local("POCZATEK", value::CVal(kStart));
    script.Local("KONIEC", value::CVal(kStart + (hours - 1) * 3600));
    for (auto _ : state) {
        list.RemoveAll();
        operands::FillInList(script, "LISTA 12.5 0 POCZATEK KONIEC HREP");
    }
    Expect(static_cast<double>(list.Elements().size()), static_cast<double>(hours), "HREP");
    Expect(static_cast<double>(list.Elements().back().GetTime()),
           static_cast<double>(kStart + (hours - 1) * 3600), "last hour");
    state.SetItemsProcessed(state.iterations() * hours);
}
BENCHMARK(ListSeries)->Arg(24)->Arg(744)->Arg(8784);

// What a list of n elements is put through; the time of each is for one element.
struct Walk {
    const char* label;
    void (*run)(operands::CVariableList& list, std::int64_t n);
    std::int64_t (*left)(std::int64_t n);
};

constexpr Walk kWalks[] = {
    {"add", [](operands::CVariableList& list, std::int64_t n) { Fill(list, n); },
     [](std::int64_t n) { return 2 * n; }},
    {"insert at the front",
     [](operands::CVariableList& list, std::int64_t n) {
         const value::CVal value(1);
         for (std::int64_t i = 0; i < n; ++i) list.Insert(0, value);
     },
     [](std::int64_t n) { return 2 * n; }},
    {"remove from the front",
     [](operands::CVariableList& list, std::int64_t) {
         for (list.MoveFirst(); list.IsIteratorValid();) list.RemoveCurrent();
     },
     [](std::int64_t) { return std::int64_t{0}; }},
    {"read all",
     [](operands::CVariableList& list, std::int64_t) {
         value::CVal value;
         for (list.MoveFirst(); list.IsIteratorValid(); list.MoveNext()) {
             list.GetValue(value, value::KindCurrent, operands::kAsStored);
         }
     },
     [](std::int64_t n) { return n; }},
    {"remove every other on a walk",
     [](operands::CVariableList& list, std::int64_t) {
         list.MoveTo(1);
         while (list.IsIteratorValid()) {
             list.RemoveCurrent();
             list.MoveNext();
             list.MoveNext();
         }
     },
     [](std::int64_t n) { return n / 2; }},
};

void ListWalk(benchmark::State& state) {
    const Walk& walk = kWalks[state.range(0)];
    const std::int64_t n = state.range(1);
    support::FakeScript script;
    operands::CVariableList& list = script.List("LISTA");
    for (auto _ : state) {
        state.PauseTiming();
        list.RemoveAll();
        Fill(list, n);
        state.ResumeTiming();
        walk.run(list, n);
    }
    Expect(static_cast<double>(list.Elements().size()), static_cast<double>(walk.left(n)),
           walk.label);
    state.SetItemsProcessed(state.iterations() * n);
    state.SetLabel(walk.label);
}
BENCHMARK(ListWalk)->ArgsProduct({benchmark::CreateDenseRange(0, std::size(kWalks) - 1, 1),
                                  {1000, 1000000}});

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    const kalvex::support::ZoneScope zone("Europe/Warsaw");
    return kalvex::bench::RunRows(argc, argv);
}
