#include "programs/card/CardText.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string_view>
#include <vector>

#include "language/Directives.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "operands/Conditions.h"
#include "operands/FormulaOperators.h"
#include "operands/PropertyNames.h"
#include "operands/Schedule.h"
#include "operands/ScriptErrors.h"
#include "operands/TimeProperties.h"
#include "text/CodePage.h"
#include "value/Status.h"

namespace kalvex::card {

namespace {

using platform::Translator;
using Lines = std::vector<std::string>;

// What no table tells.
constexpr std::string_view kHead =
    "# The card\n"
    "\n"
    "Every word of [the language](language.md), as its tables have it. Made by\n"
    "`LANGUAGE=en build/release/bin/language-card > docs/card.md`; the build makes a page to print "
    "of\n"
    "it, `build/release/docs/card.pdf`. A script of `examples/` shows most of it at work.\n";

// Texts of tables are whole literals, so a null stands behind them.
std::string Translated(const Translator& translator, std::string_view polish) {
    return text::ToUtf8(translator.Translate(polish.data()));
}

// A form a line, each behind `start`.
void AddForms(Lines& lines, std::string_view start, std::string_view forms) {
    for (std::size_t at = 0; at <= forms.size();) {
        const std::size_t end = std::min(forms.find('\n', at), forms.size());
        lines.push_back(std::string(start).append(forms.substr(at, end - at)));
        at = end + 1;
    }
}

Lines Statements(const Translator& translator) {
    Lines lines;
    for (const engine::StatementRow& row : language::Statements().Rows()) {
        AddForms(lines, "", Translated(translator, row.usage));
    }
    for (const language::DirectiveRow& row : language::Directives()) {
        AddForms(lines, "", Translated(translator, row.usage));
    }
    std::ranges::sort(lines);
    return lines;
}

Lines Functions(const Translator& translator) {
    Lines lines;
    for (const operands::FunctionRow& row : language::Functions().Rows()) {
        const std::string keyword(row.keyword);
        if (row.usage.empty()) {
            lines.push_back(keyword);
        } else {
            AddForms(lines, keyword + ' ', Translated(translator, row.usage));
        }
    }
    std::ranges::sort(lines);
    return lines;
}

// As it is written in a formula.
std::string Written(const operands::FormulaOperator& row) {
    if (row.letter == operands::FormulaLetter::UnaryMinus) return "-x";
    return row.function ? std::string(row.text) + "()" : std::string(row.text);
}

// A level a line, the tightest first.
Lines Operators(const Translator&) {
    std::map<int, std::string, std::greater<>> levels;
    for (const operands::FormulaOperator& row : operands::FormulaOperators()) {
        // TG cannot stand in a formula.
        if (row.apply == nullptr) continue;
        std::string& level = levels[row.binding];
        level.append(level.empty() ? "" : "  ").append(Written(row));
    }
    Lines lines;
    for (const auto& [binding, level] : levels) lines.push_back(level);
    return lines;
}

template <class Rows, class Word>
Lines Words(const Rows& rows, Word word) {
    Lines lines;
    for (const auto& row : rows) lines.push_back(std::string(std::invoke(word, row)));
    return lines;
}

Lines Conditions(const Translator&) {
    return Words(operands::ConditionWords(), [](const operands::ConditionWordRow& row) {
        return std::string(row.word) + " <variable>[.<kind>]";
    });
}

Lines Kinds(const Translator&) {
    return Words(value::ValueKinds(),
                 [](const value::ValueKindRow& row) { return '.' + std::string(row.suffix); });
}

Lines Properties(const Translator&) {
    return Words(operands::PropertyNames(), std::identity());
}

Lines TimeProperties(const Translator&) {
    return Words(operands::TimeProperties(), &operands::TimeProperty::name);
}

Lines StatusWords(const Translator&) {
    return Words(value::StatusWords(), [](const value::StatusWord& row) {
        return std::to_string(row.bit) + ' ' + std::string(row.word);
    });
}

Lines ScheduleWords(const Translator&) {
    return Words(operands::ScheduleWords(), &operands::ScheduleWord::word);
}

Lines Errors(const Translator& translator) {
    Lines lines;
    for (int code = 0; const auto* row = operands::FindScriptError(code); ++code) {
        lines.push_back(std::to_string(code) + ' ' + Translated(translator, row->text));
    }
    return lines;
}

struct Section {
    const char* title;
    Lines (*lines)(const Translator& translator);
    const char* glue;  // between two of its lines
};

constexpr Section kSections[] = {
    {"Statements", Statements, "\n"},
    {"Functions", Functions, "\n"},
    {"Operators of formulas, the tightest first", Operators, "\n"},
    {"Words of conditions", Conditions, "\n"},
    {"Kinds of data", Kinds, "  "},
    {"Properties of variables, lists and pointers", Properties, "  "},
    {"Properties of times", TimeProperties, "  "},
    {"Words of the schedule", ScheduleWords, "  "},
    {"Status", StatusWords, "\n"},
    {"Errors", Errors, "\n"},
};

constexpr std::size_t kWidth = 96;

// Short words go on one line as far as they fit.
std::string Joined(const Lines& lines, std::string_view glue) {
    std::string joined;
    std::size_t width = 0;
    for (const std::string& line : lines) {
        const bool isFirst = joined.empty();
        const bool isNext = !isFirst && width + glue.size() + line.size() <= kWidth;
        const std::string_view before = isFirst ? "" : isNext && glue != "\n" ? glue : "\n";
        joined.append(before).append(line);
        width = before == glue ? width + glue.size() + line.size() : line.size();
    }
    return joined;
}

}  // namespace

std::string CardText(const Translator& translator) {
    std::string card(kHead);
    for (const Section& section : kSections) {
        card.append("\n## ").append(section.title).append("\n\n```\n");
        card.append(Joined(section.lines(translator), section.glue)).append("\n```\n");
    }
    return card;
}

}  // namespace kalvex::card
