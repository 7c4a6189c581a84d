#include "programs/kalvex-run/TestJudgement.h"

#include <fmt/format.h>

#include <algorithm>

#include "value/LocalTimeText.h"

namespace kalvex::run {

namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view kPathMark = "%s";
constexpr const char* kStartLines[] = {"%s : Inicjowanie skryptu ", "%s : Start skryptu "};

// Of an object only the wanted members count.
bool IsSame(const TestJson& actual, const TestJson& wanted) {
    if (wanted.is_object()) {
        return actual.is_object() &&
               std::ranges::all_of(wanted.items(), [&actual](const auto& member) {
                   return actual.contains(member.key()) &&
                          IsSame(actual[member.key()], member.value());
               });
    }
    if (wanted.is_array()) return actual.is_array() && std::ranges::equal(actual, wanted, IsSame);
    return actual == wanted;
}

std::string Shown(const TestJson& value) {
    return value.dump(-1, ' ', false, TestJson::error_handler_t::replace);
}

void Compare(const std::string& label, const TestJson& actual, const TestJson& wanted,
             Lines& found) {
    if (IsSame(actual, wanted)) return;
    found.push_back(fmt::format("{}: expected {}, got {}", label, Shown(wanted), Shown(actual)));
}

// All lines that the log must hold: a test that does not tell of the first start has gone through
// it.
Lines WantedLog(const ScriptTest& test, const std::string& path) {
    Lines log;
    if (test.log.empty() || test.log.front() != kStartLines[0]) {
        log.assign(std::begin(kStartLines), std::end(kStartLines));
    }
    log.insert(log.end(), test.log.begin(), test.log.end());
    for (std::string& line : log) {
        if (line.starts_with(kPathMark)) line.replace(0, kPathMark.size(), path);
    }
    return log;
}

Lines LogOf(const TestOutcome& run) {
    Lines log;
    for (const TestJson& entry : run.result["log"]) log.push_back(entry["text"]);
    return log;
}

// Between what both begin and end with, the wanted lines and then the actual ones.
void CompareLogs(const Lines& actual, const Lines& wanted, Lines& found) {
    if (actual == wanted) return;
    const auto begin = std::ranges::mismatch(actual, wanted);
    auto actualEnd = actual.end();
    auto wantedEnd = wanted.end();
    while (actualEnd != begin.in1 && wantedEnd != begin.in2 &&
           *std::prev(actualEnd) == *std::prev(wantedEnd)) {
        --actualEnd;
        --wantedEnd;
    }
    const auto show = [&found](const char* mark, auto first, auto last) {
        for (; first != last; ++first) found.push_back(mark + *first);
    };
    found.emplace_back("log: \"-\" is expected and missing, \"+\" is there and not expected");
    show("    ", actual.begin(), begin.in1);
    show("  - ", begin.in2, wantedEnd);
    show("  + ", begin.in1, actualEnd);
    show("    ", actualEnd, actual.end());
}

}  // namespace

Lines Differences(const ScriptTest& test, const TestOutcome& run) {
    Lines found;
    Compare("exit", run.exitStatus, test.exitStatus, found);
    CompareLogs(LogOf(run), WantedLog(test, run.path), found);
    for (const Expectation& expectation : test.expectations) {
        try {
            const TestJson wanted =
                expectation.isLocalTime
                    ? TestJson(value::ParseLocalTime(expectation.wanted.get<std::string>()).value())
                    : expectation.wanted;
            Compare(expectation.label, expectation.read(run), wanted, found);
        } catch (const TestFault& fault) {
            found.push_back(expectation.label + ": " + fault.words);
        }
    }
    return found;
}

}  // namespace kalvex::run
