// The operations that a script's values spend their time in: copies, arithmetic and comparisons of
// numbers, and texts that grow. Each row checks what came out; the program fails when it is wrong.

#include <cstdio>
#include <string_view>

#include "checked_rows.h"
#include "value/ValueText.h"

namespace kalvex::bench {
namespace {

value::CVal Stamped(value::CVal value) {
    value.SetTime(1710050400);
    return value;
}

void Assign(benchmark::State& state) {
    const value::CVal values[] = {Stamped(value::CVal(1.5)), Stamped(value::CVal(2.5))};
    value::CVal target;
    std::size_t i = 0;
    for (auto _ : state) {
        target = values[++i % 2];
        benchmark::DoNotOptimize(target);
    }
    Expect(value::ValueToDouble(target), i % 2 == 0 ? 1.5 : 2.5, "assign");
}
BENCHMARK(Assign);

void Copy(benchmark::State& state) {
    const value::CVal source = Stamped(value::CVal(1.5));
    double sum = 0;
    for (auto _ : state) {
        value::CVal copy(source);
        benchmark::DoNotOptimize(copy);
        sum = copy.Real();
    }
    Expect(sum, 1.5, "copy");
}
BENCHMARK(Copy);

struct Pair {
    const char* label;
    value::CVal left;
    value::CVal right;
};

const Pair& PairAt(std::int64_t index) {
    static const Pair pairs[] = {
        {"double, double", value::CVal(6.5), value::CVal(0.5)},
        {"int, int", value::CVal(6), value::CVal(2)},
        {"64 bits, 64 bits", value::CVal(6L), value::CVal(2L)},
        {"double, int", value::CVal(6.5), value::CVal(2)},
    };
    return pairs[index];
}

// All four on a fresh copy of the left value, as a formula has it.
void Arithmetic(benchmark::State& state) {
    const Pair& pair = PairAt(state.range(0));
    value::CVal result;
    for (auto _ : state) {
        result = pair.left;
        result += pair.right;
        result -= pair.right;
        result *= pair.right;
        result /= pair.right;
        benchmark::DoNotOptimize(result);
    }
    Expect(value::ValueToDouble(result), value::ValueToDouble(pair.left), "arithmetic");
    state.SetLabel(pair.label);
}
BENCHMARK(Arithmetic)->DenseRange(0, 3);

void Compare(benchmark::State& state) {
    const Pair& pair = PairAt(state.range(0));
    int result = 0;
    for (auto _ : state) {
        result = (pair.left < pair.right) + (pair.left >= pair.right) + (pair.left != pair.right);
        benchmark::DoNotOptimize(result);
    }
    Expect(result, 2, "compare");
    state.SetLabel(pair.label);
}
BENCHMARK(Compare)->DenseRange(0, 3);

void Read(benchmark::State& state) {
    const value::CVal& value = PairAt(state.range(0)).left;
    double real = 0;
    std::int32_t integer = 0;
    for (auto _ : state) {
        real = value::ValueToDouble(value);
        integer = value::ValueToInt(value);
        benchmark::ClobberMemory();
    }
    Expect(integer, 6, "read");
    Expect(real, value.IsReal() ? 6.5 : 6, "read");
    state.SetLabel(PairAt(state.range(0)).label);
}
BENCHMARK(Read)->DenseRange(0, 3);

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    return kalvex::bench::RunRows(argc, argv);
}
