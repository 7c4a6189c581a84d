#include "programs/kalvex-run/TestReading.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "text/Trim.h"
#include "text/WholeNumber.h"
#include "value/Status.h"

namespace kalvex::run {

namespace {

constexpr std::string_view kCellFields[] = {"type", "status", "time", "value", "text"};

// Takes a word off the front of the text, which begins with it.
std::string TakeShellWord(std::string_view& text) {
    std::string word;
    char quote = 0;
    std::size_t at = 0;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        const bool hasNext = at + 1 < text.size();
        if (quote == 0 && text::kBlanksAndTabs.find(c) != std::string_view::npos) break;
        if (c == quote) {
            quote = 0;
        } else if (quote == 0 && (c == '"' || c == '\'')) {
            quote = c;
        } else if (c == '\\' && hasNext &&
                   (quote == 0 ||
                    (quote == '"' && (text[at + 1] == '"' || text[at + 1] == '\\')))) {
            word += text[++at];
        } else {
            word += c;
        }
    }
    if (quote != 0) throw TestFault{fmt::format("an open quote: {}", text)};
    text.remove_prefix(at);
    return word;
}

TestJson Fields(const TestJson& cells, const std::string& field) {
    TestJson fields = TestJson::array();
    for (const TestJson& cell : cells) fields.push_back(cell[field]);
    return fields;
}

}  // namespace

std::vector<std::string> SplitShellWords(std::string_view text) {
    std::vector<std::string> words;
    while (!(text = text::TrimLeft(text, text::kBlanksAndTabs)).empty()) {
        words.push_back(TakeShellWord(text));
    }
    return words;
}

TestJson ReadPath(const TestJson& value, std::string_view path) {
    const TestJson* part = &value;
    for (std::string_view rest = path; !rest.empty();) {
        const std::size_t end = std::min(rest.find('.'), rest.size());
        const std::string step(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        const auto index = text::ReadWholeNumber<std::size_t>(step);
        if (part->is_array() && index && *index < part->size()) {
            part = &(*part)[*index];
        } else if (part->is_object() && part->contains(step)) {
            part = &(*part)[step];
        } else {
            throw TestFault{fmt::format("{} of {} is not there", step, path)};
        }
    }
    return *part;
}

TestJson ReadVariable(const TestJson& script, const std::string& name, const std::string& field) {
    const std::size_t dot = name.rfind('.');
    const bool hasSuffix = dot != std::string::npos && dot > 0 &&
                           value::KindFromWord(name.substr(dot + 1)) != value::KindNone;
    const std::string base = hasSuffix ? name.substr(0, dot) : name;
    const std::string slot(hasSuffix ? name.substr(dot + 1)
                                     : value::WordOfKind(value::KindCurrent));
    const auto isNamed = [&base](const TestJson& one) { return one["name"] == base; };
    const TestJson& variables = script["variables"];
    const auto count = std::ranges::count_if(variables, isNamed);
    if (count != 1) throw TestFault{fmt::format("{} variables are called {}", count, base)};
    const TestJson& variable = *std::ranges::find_if(variables, isNamed);
    if (std::ranges::find(kCellFields, field) == std::end(kCellFields)) {
        return ReadPath(variable, field);
    }
    if (value::KindFromWord(slot) == value::KindArchive) {
        if (!variable.contains("archive")) throw TestFault{base + " has no archive"};
        return Fields(variable["archive"], field);
    }
    if (variable["kind"] == "LIST") return Fields(variable["elements"], field);
    if (variable["kind"] == "POINTER") {
        throw TestFault{base + " is a pointer: expect its target"};
    }
    return variable["slots"][slot][field];
}

}  // namespace kalvex::run
