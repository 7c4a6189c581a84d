#include "programs/kalvex-run/Completion.h"

#include <fmt/format.h>

#include <string_view>

#include "programs/CompletionText.h"
#include "programs/kalvex-run/Options.h"

namespace kalvex::run {

namespace {

// What the shells offer for a value of this kind; nothing for any other.
struct ValueRow {
    std::string_view value;
    std::string_view zsh;
    std::string_view fish;
};

constexpr ValueRow kValues[] = {{"FILE", "_files", " -r -F"},
                                {"[WORD]", "_kalvex_run_words", " -x -a '(__kalvex_run_words)'"}};
constexpr ValueRow kAnyValue = {"", " ", " -x"};

const ValueRow& RowOf(std::string_view value) {
    for (const ValueRow& row : kValues) {
        if (row.value == value) return row;
    }
    return kAnyValue;
}

void AddAlternative(std::string& pattern, std::string_view name) {
    if (!pattern.empty()) pattern += " | ";
    pattern += name;
}

}  // namespace

std::string BashCompletion(std::string script) {
    std::string options;
    std::string files;
    std::string values;
    for (const OptionInfo& option : OptionInfos()) {
        programs::AddWord(options, option.name);
        if (option.value.empty()) continue;
        AddAlternative(option.value == kValues[0].value ? files : values, option.name);
    }
    programs::FillPlace(script, "@OPTIONS@", options);
    programs::FillPlace(script, "@FILES@", files);
    programs::FillPlace(script, "@VALUES@", values);
    return script;
}

std::string FishCompletion(std::string script) {
    std::string options;
    for (const OptionInfo& option : OptionInfos()) {
        const std::string_view value = option.value.empty() ? "" : RowOf(option.value).fish;
        options += programs::FishOption("kalvex-run", option.name, "", value, option.help);
    }
    programs::FillPlace(script, "@OPTIONS@", options);
    return script;
}

std::string ZshCompletion(std::string script) {
    std::string options;
    for (const OptionInfo& option : OptionInfos()) {
        const std::string value =
            option.value.empty()
                ? ""
                : fmt::format(":{}:{}", programs::ZshText(option.value), RowOf(option.value).zsh);
        options +=
            fmt::format("    '{}[{}]{}' \\\n", option.name, programs::ZshText(option.help), value);
    }
    programs::FillPlace(script, "@OPTIONS@", options);
    return script;
}

}  // namespace kalvex::run
