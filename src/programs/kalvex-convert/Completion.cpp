#include "programs/kalvex-convert/Completion.h"

#include <fmt/format.h>

#include "programs/CompletionText.h"
#include "programs/kalvex-convert/Options.h"

namespace kalvex::convert {

namespace {

std::string WordsOf(const OptionInfo& option) {
    std::string words;
    for (const std::string_view word : option.words) programs::AddWord(words, word);
    return words;
}

}  // namespace

std::string BashCompletion(std::string script) {
    std::string options;
    std::string values;
    for (const OptionInfo& option : OptionInfos()) {
        programs::AddWord(options, option.name);
        if (option.words.empty()) continue;
        values += fmt::format("        {} | {}) words=\"{}\" ;;\n", option.shortName, option.name,
                              WordsOf(option));
    }
    programs::FillPlace(script, "@OPTIONS@", options);
    programs::FillPlace(script, "@VALUES@", values);
    return script;
}

std::string FishCompletion(std::string script) {
    std::string options;
    for (const OptionInfo& option : OptionInfos()) {
        const std::string words = fmt::format(" -x -a '{}'", WordsOf(option));
        const std::string value = option.value.empty()   ? ""
                                  : option.words.empty() ? " -r -F"
                                                         : words;
        options += programs::FishOption("kalvex-convert", option.name, option.shortName, value,
                                        option.help);
    }
    programs::FillPlace(script, "@OPTIONS@", options);
    return script;
}

std::string ZshCompletion(std::string script) {
    std::string options;
    for (const OptionInfo& option : OptionInfos()) {
        const std::string words =
            option.words.empty() ? "_files" : fmt::format("({})", WordsOf(option));
        const std::string value =
            option.value.empty() ? "" : fmt::format(":{}:{}", option.value, words);
        for (const std::string_view name : {option.shortName, option.name}) {
            options +=
                fmt::format("        '{}[{}]{}' \\\n", name, programs::ZshText(option.help), value);
        }
    }
    programs::FillPlace(script, "@OPTIONS@", options);
    return script;
}

}  // namespace kalvex::convert
