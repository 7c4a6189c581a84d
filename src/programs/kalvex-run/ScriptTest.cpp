#include "programs/kalvex-run/ScriptTest.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

#include "platform/Files.h"
#include "programs/kalvex-run/TestReading.h"
#include "text/CodePage.h"
#include "text/Trim.h"
#include "text/WholeNumber.h"
#include "value/LocalTimeText.h"

namespace kalvex::run {

namespace {

constexpr std::string_view kMark = ";;";
constexpr std::string_view kLocal = "local ";
constexpr const char* kZoneFolder = "/usr/share/zoneinfo";

struct Wanted {
    TestJson value;
    bool isLocalTime = false;
};

TestJson ReadJson(std::string_view text) {
    TestJson value = TestJson::parse(text, nullptr, false);
    if (value.is_discarded()) throw TestFault{fmt::format("no value: {}", text)};
    return value;
}

std::string ReadText(std::string_view text) {
    const TestJson value = ReadJson(text);
    if (!value.is_string()) throw TestFault{fmt::format("no quoted text: {}", text)};
    return value;
}

std::int64_t ReadCount(std::string_view text) {
    const auto number = text::ReadWholeNumber<std::int64_t>(text);
    if (!number || *number < 0) throw TestFault{fmt::format("no number: {}", text)};
    return *number;
}

Wanted ReadWanted(std::string_view text) {
    if (!text.starts_with(kLocal)) return {ReadJson(text)};
    std::string reading = ReadText(text.substr(kLocal.size()));
    if (!value::ParseLocalTime(reading)) throw TestFault{fmt::format("no time: {}", reading)};
    return {std::move(reading), true};
}

// What stands before and behind the sign.
std::pair<std::string_view, Wanted> ReadEquation(std::string_view text) {
    constexpr std::string_view kSign = " = ";
    const std::size_t sign = text.find(kSign);
    if (sign == std::string_view::npos) {
        throw TestFault{fmt::format("no \"{}\" in: {}", kSign, text)};
    }
    return {text::Trim(text.substr(0, sign)),
            ReadWanted(text::Trim(text.substr(sign + kSign.size())))};
}

void Expect(ScriptTest& test, std::string label, std::function<TestJson(const TestOutcome&)> read,
            Wanted wanted) {
    test.expectations.push_back(
        {std::move(label), std::move(read), std::move(wanted.value), wanted.isLocalTime});
}

std::vector<std::string> WordsOf(std::string_view text) {
    std::vector<std::string> words;
    while (!(text = text::TrimLeft(text, text::kBlanksAndTabs)).empty()) {
        const std::size_t end = std::min(text.find_first_of(text::kBlanksAndTabs), text.size());
        words.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return words;
}

void OnScript(ScriptTest& test, std::string_view text) {
    test.script = text;
}

void OnRun(ScriptTest& test, std::string_view text) {
    test.options = SplitShellWords(text);
}

void OnZone(ScriptTest& test, std::string_view text) {
    const std::filesystem::path file = std::filesystem::path(kZoneFolder) / text;
    const std::filesystem::path inside = file.lexically_normal().lexically_relative(kZoneFolder);
    std::error_code fault;
    const bool isThere =
        !inside.empty() && *inside.begin() != ".." && std::filesystem::is_regular_file(file, fault);
    if (!isThere) throw TestFault{fmt::format("no time zone: {}", text)};
    test.zone = text;
}

void OnExit(ScriptTest& test, std::string_view text) {
    test.exitStatus = ReadCount(text);
}

void OnError(ScriptTest& test, std::string_view text) {
    const std::size_t end = std::min(text.find(' '), text.size());
    TestJson wanted = {ReadCount(text.substr(0, end)), ReadText(text::Trim(text.substr(end)))};
    const auto read = [](const TestOutcome& run) {
        return TestJson{run.Script()["errorCode"], run.Script()["errorText"]};
    };
    Expect(test, "error", read, {std::move(wanted)});
}

void OnLine(ScriptTest& test, std::string_view text) {
    const auto read = [](const TestOutcome& run) {
        return TestJson(run.Script()["currentLine"].get<std::int64_t>() + 1);
    };
    Expect(test, "line", read, {ReadCount(text)});
}

void OnLog(ScriptTest& test, std::string_view text) {
    test.log.push_back(ReadText(text));
}

void OnVariables(ScriptTest& test, std::string_view text) {
    const auto read = [](const TestOutcome& run) {
        TestJson names = TestJson::array();
        for (const TestJson& variable : run.Script()["variables"])
            names.push_back(variable["name"]);
        return names;
    };
    Expect(test, "variables", read, {TestJson(WordsOf(text))});
}

void OnExpect(ScriptTest& test, std::string_view text) {
    auto [left, wanted] = ReadEquation(text);
    const std::size_t end = std::min(left.find(' '), left.size());
    const std::string name(left.substr(0, end));
    std::string field(text::Trim(left.substr(end)));
    if (field.empty()) field = "value";
    const auto read = [name, field](const TestOutcome& run) {
        return ReadVariable(run.Script(), name, field);
    };
    Expect(test, std::string(left), read, std::move(wanted));
}

void OnResult(ScriptTest& test, std::string_view text) {
    auto [left, wanted] = ReadEquation(text);
    const std::string path(left);
    Expect(
        test, path, [path](const TestOutcome& run) { return ReadPath(run.result, path); },
        std::move(wanted));
}

void OnFile(ScriptTest& test, std::string_view text) {
    auto [left, wanted] = ReadEquation(text);
    const std::string name = ReadText(left);
    const auto read = [name](const TestOutcome& run) {
        std::string content;
        std::string error;
        const std::string path = (run.folder / name).string();
        if (!platform::ReadWholeFile(path, content, error)) return TestJson();
        return TestJson(text::ToUtf8(content));
    };
    Expect(test, "file " + name, read, std::move(wanted));
}

struct InstructionRow {
    std::string_view name;
    void (*take)(ScriptTest& test, std::string_view text);
    bool repeats;
    bool expects;  // something of the run
};

constexpr InstructionRow kInstructions[] = {
    {"script", OnScript, false, false}, {"run", OnRun, false, false},
    {"tz", OnZone, false, false},       {"exit", OnExit, false, true},
    {"error", OnError, false, true},    {"line", OnLine, false, true},
    {"log", OnLog, true, true},         {"variables", OnVariables, false, true},
    {"expect", OnExpect, true, true},   {"result", OnResult, true, true},
    {"file", OnFile, true, true},
};

// The row that it took.
const InstructionRow& TakeInstruction(ScriptTest& test, std::string_view line,
                                      const std::set<std::string_view>& seen) {
    const std::size_t colon = std::min(line.find(':'), line.size());
    const std::string_view name =
        text::Trim(line.substr(kMark.size(), std::max(colon, kMark.size()) - kMark.size()));
    const auto* row = std::ranges::find(kInstructions, name, &InstructionRow::name);
    if (colon == line.size() || row == std::end(kInstructions)) {
        throw TestFault{fmt::format("unknown instruction: {}", line)};
    }
    if (seen.contains(row->name) && !row->repeats) {
        throw TestFault{fmt::format("a second {}", row->name)};
    }
    row->take(test, text::Trim(line.substr(colon + 1)));
    return *row;
}

}  // namespace

ScriptTest ParseScriptTest(std::string_view text) {
    ScriptTest test;
    std::set<std::string_view> seen;
    bool expects = false;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text::Trim(text.substr(0, end), " \t\r");
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.starts_with(kMark)) continue;
        try {
            const InstructionRow& row = TakeInstruction(test, line, seen);
            seen.insert(row.name);
            expects |= row.expects;
        } catch (const TestFault& fault) {
            throw TestFault{fmt::format("line {}: {}", number, fault.words)};
        }
    }
    test.hasInstructions = !seen.empty();
    if (test.hasInstructions && !expects) throw TestFault{"the script expects nothing"};
    return test;
}

}  // namespace kalvex::run
