// Rows of a benchmark that check what they measure: the program fails when one of them is wrong.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <string_view>

namespace kalvex::bench {

inline bool g_wrong = false;

inline void Wrong(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    g_wrong = true;
}

inline void Expect(double got, double wanted, std::string_view row) {
    if (got == wanted) return;
    std::fprintf(stderr, "%.*s: %.17g instead of %.17g\n", static_cast<int>(row.size()), row.data(),
                 got, wanted);
    g_wrong = true;
}

// All rows that the arguments pick; answers the exit status.
inline int RunRows(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return g_wrong ? 1 : 0;
}

}  // namespace kalvex::bench
