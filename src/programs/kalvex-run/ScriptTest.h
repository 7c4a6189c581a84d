// A script that carries its expectations in comments: what they say. Comments that begin with ";;"
// are instructions; docs/kalvex-run.md has the notation.
#pragma once

#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace kalvex::run {

using TestJson = nlohmann::ordered_json;

// Thrown: what is wrong with a test itself, or what its run lacks. UTF-8.
struct TestFault {
    std::string words;
};

// What a run left behind.
struct TestOutcome {
    int exitStatus = 0;
    TestJson result;  // what --json prints
    std::filesystem::path folder;
    std::string path;    // of the script, within the folder
    std::string errors;  // what came on standard error

    const TestJson& Script() const { return result["scripts"][0]; }
};

struct Expectation {
    std::string label;
    std::function<TestJson(const TestOutcome& run)> read;  // throws TestFault
    TestJson wanted;
    bool isLocalTime = false;  // a reading of the clock in the zone of the test; else a value
};

struct ScriptTest {
    std::string script;  // to run in its place, relative to its folder; empty: itself
    std::vector<std::string> options;
    std::string zone = "Europe/Warsaw";
    std::int64_t exitStatus = 0;
    std::vector<std::string> log;  // lines; "%s" at the begin of one is the path of the script
    std::vector<Expectation> expectations;
    bool hasInstructions = false;
};

// `text` is the script, UTF-8. Throws TestFault where an instruction is none, and where there are
// some that expect nothing.
ScriptTest ParseScriptTest(std::string_view text);

}  // namespace kalvex::run
