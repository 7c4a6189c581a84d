// A fuzz target: what it does with an input, and inputs to begin with. A target that finds a fault
// ends the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

// The entry by which fuzzing engines know a target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace kalvex::fuzz {

// Inputs that the target understands.
std::vector<std::string> FuzzCorpus();

// Ends the process with the words unless it is so.
inline void Demand(bool holds, const char* words) {
    if (holds) return;
    std::fprintf(stderr, "%s\n", words);
    std::abort();
}

inline std::string_view Bytes(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

}  // namespace kalvex::fuzz
