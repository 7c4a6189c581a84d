// One test of a script: a process of this program's own, in a scratch folder of its own.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kalvex::run {

// Beside WHAT.kx, the folder WHAT.d has the files that the script finds beside itself.
inline constexpr const char* kFolderBeside = ".d";

enum class TestVerdict {
    Passed,
    Failed,   // something was not as expected
    Broken,   // the test itself is wrong, or its run came to nothing
    Skipped,  // the script has no instructions
};

struct TestReport {
    std::filesystem::path script;
    TestVerdict verdict = TestVerdict::Passed;
    std::vector<std::string> lines;  // what was not as expected, or why; UTF-8
    double seconds = 0;
};

// Sets the zone of the process to that of the test.
TestReport RunScriptTest(const std::filesystem::path& script);

}  // namespace kalvex::run
