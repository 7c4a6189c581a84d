#include "programs/kalvex-run/Testing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "platform/Files.h"
#include "programs/kalvex-run/Interruption.h"
#include "programs/kalvex-run/JUnit.h"
#include "programs/kalvex-run/TestRun.h"

namespace kalvex::run {

namespace {

namespace fs = std::filesystem;

constexpr const char* kScriptEnding = ".kx";

// How each verdict is shown.
constexpr const char* kVerdicts[] = {"ok  ", "FAIL", "FAIL", "skip"};

std::vector<fs::path> ScriptsBelow(const fs::path& folder) {
    std::vector<fs::path> scripts;
    std::error_code fault;
    for (fs::recursive_directory_iterator entry(folder, fault), end; entry != end;
         entry.increment(fault)) {
        const fs::path& path = entry->path();
        if (entry->is_directory() && path.extension() == kFolderBeside) {
            entry.disable_recursion_pending();
        } else if (path.extension() == kScriptEnding && entry->is_regular_file()) {
            scripts.push_back(path);
        }
    }
    std::ranges::sort(scripts);
    return scripts;
}

// A script that is named, rather than found in a folder, has to have expectations.
struct Found {
    std::vector<fs::path> scripts;
    std::set<fs::path> named;
};

bool Find(const std::vector<std::string>& paths, Found& found, std::string& fault) {
    for (const std::string& path : paths) {
        std::error_code error;
        const fs::file_status status = fs::status(path, error);
        if (!fs::exists(status)) {
            fault = fmt::format("{}: {}", path, error.message());
            return false;
        }
        if (!fs::is_directory(status)) {
            found.named.insert(path);
            found.scripts.emplace_back(path);
            continue;
        }
        const std::vector<fs::path> below = ScriptsBelow(path);
        if (below.empty()) {
            fault = fmt::format("{}: no script is there", path);
            return false;
        }
        found.scripts.insert(found.scripts.end(), below.begin(), below.end());
    }
    return true;
}

void Print(const TestReport& report) {
    const bool skipped = report.verdict == TestVerdict::Skipped;
    fmt::print("{}  {}{}\n", kVerdicts[static_cast<std::size_t>(report.verdict)],
               report.script.string(), skipped ? ": " + report.lines.front() : "");
    if (!skipped) {
        for (const std::string& line : report.lines) fmt::print("      {}\n", line);
    }
    std::fflush(stdout);
}

}  // namespace

programs::ExitStatus RunScriptTests(const std::vector<std::string>& paths,
                                    const std::optional<std::string>& junit, std::string& fault) {
    Found found;
    if (!Find(paths, found, fault)) return programs::ExitRefused;
    // What the runs say is the same wherever the tests are run.
    setenv("LC_ALL", "C.UTF-8", 1);
    unsetenv("LANGUAGE");
    WatchInterruption();
    std::vector<TestReport> reports;
    for (const fs::path& script : found.scripts) {
        TestReport report = RunScriptTest(script);
        if (IsInterrupted()) break;  // and what came of this one means nothing
        if (report.verdict == TestVerdict::Skipped && found.named.contains(script)) {
            report.verdict = TestVerdict::Broken;
        }
        Print(report);
        reports.push_back(std::move(report));
    }
    const auto count = [&reports](TestVerdict verdict) {
        return std::ranges::count(reports, verdict, &TestReport::verdict);
    };
    const auto passed = count(TestVerdict::Passed);
    const auto failed = count(TestVerdict::Failed) + count(TestVerdict::Broken);
    const auto skipped = count(TestVerdict::Skipped);
    fmt::print("{} passed, {} failed, {} skipped{}\n", passed, failed, skipped,
               IsInterrupted() ? ", interrupted" : "");
    std::string error;
    if (junit && !platform::WriteWholeFile(*junit, JUnitXml(reports), error)) {
        fault = fmt::format("{}: {}", *junit, error);
    } else if (passed + failed == 0 && !IsInterrupted()) {
        fault = "no script has expectations";
    }
    if (!fault.empty()) return programs::ExitRefused;
    return failed > 0 || IsInterrupted() ? programs::ExitFailed : programs::ExitDone;
}

}  // namespace kalvex::run
