#include "programs/kalvex-run/LanguageHelp.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

#include "language/Directives.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "operands/Conditions.h"
#include "operands/Operand.h"
#include "operands/ScriptErrors.h"
#include "operands/TimeProperties.h"
#include "text/CodePage.h"
#include "text/NearestWord.h"
#include "value/Status.h"
#include "workbench/model/KeywordHelp.h"

namespace kalvex::run {

namespace {

using platform::Translatable;

constexpr std::size_t kMostNear = 5;

// As a table of the language has it: Polish, UTF-8, and a null behind each text. What is empty is
// told by the help of the window, or by nobody.
struct KnownWord {
    std::string word;
    std::string_view usage = {};
    std::string_view purpose = {};
    bool isArguments = false;  // the forms are without the word
};
using KnownWords = std::vector<KnownWord>;

KnownWords Statements() {
    KnownWords words;
    for (const engine::StatementRow& row : language::Statements().Rows()) {
        words.push_back({std::string(row.keyword), row.usage, row.help});
    }
    return words;
}

KnownWords Directives() {
    KnownWords words;
    for (const language::DirectiveRow& row : language::Directives()) {
        words.push_back({std::string(row.keyword), row.usage, row.help});
    }
    return words;
}

KnownWords Functions() {
    KnownWords words;
    for (const operands::FunctionRow& row : language::Functions().Rows()) {
        words.push_back({std::string(row.keyword), row.usage, row.help, true});
    }
    return words;
}

KnownWords Conditions() {
    KnownWords words;
    for (const operands::ConditionWordRow& row : operands::ConditionWords()) {
        words.push_back({std::string(row.word), {}, row.help});
    }
    return words;
}

KnownWords VariableProperties() {
    KnownWords words;
    for (const operands::VariablePropertyRow& row : operands::VariableProperties()) {
        words.push_back({std::string(row.name), {}, row.help});
    }
    return words;
}

KnownWords TimeProperties() {
    KnownWords words;
    for (const operands::TimeProperty& row : operands::TimeProperties()) {
        words.push_back({std::string(row.name), {}, row.help});
    }
    return words;
}

KnownWords DataKinds() {
    KnownWords words;
    for (const value::ValueKindRow& row : value::ValueKinds()) {
        words.push_back({std::string(row.suffix), {}, row.help});
    }
    return words;
}

KnownWords StatusWords() {
    KnownWords words;
    for (const value::StatusWord& row : value::StatusWords()) {
        words.push_back({std::string(row.word), {}, Translatable("Status zmiennej")});
    }
    return words;
}

// The words between operands, and the properties of lists and pointers, are known to the help of
// the window alone, which knows most of the words above too.
KnownWords OtherWords() {
    KnownWords words;
    for (const std::string_view word : workbench::HelpKeywords()) {
        words.push_back({std::string(word)});
    }
    return words;
}

KnownWords Errors() {
    KnownWords words;
    for (int code = operands::ErrorNone + 1;; ++code) {
        const operands::ScriptErrorRow* row = operands::FindScriptError(code);
        if (row == nullptr) return words;
        words.push_back({std::to_string(code), {}, row->text});
    }
}

struct KindRow {
    const char* heading;
    const char* name;
    KnownWords (*words)();
    bool isRest;  // only of words that no row above has
};

constexpr KindRow kKinds[] = {
    {Translatable("Instrukcje"), Translatable("instrukcja"), Statements, false},
    {Translatable("Dyrektywy"), Translatable("dyrektywa"), Directives, false},
    {Translatable("Funkcje"), Translatable("funkcja"), Functions, false},
    {Translatable("Warunki instrukcji IF"), Translatable("warunek"), Conditions, false},
    {Translatable("Właściwości zmiennych"), Translatable("właściwość zmiennej"), VariableProperties,
     false},
    {Translatable("Właściwości czasu"), Translatable("właściwość czasu"), TimeProperties, false},
    {Translatable("Typy danych"), Translatable("typ danych"), DataKinds, false},
    {Translatable("Statusy"), Translatable("status"), StatusWords, false},
    {Translatable("Inne słowa"), Translatable("słowo"), OtherWords, true},
    {Translatable("Błędy skryptu"), Translatable("błąd skryptu"), Errors, false},
};

std::string_view WithoutDot(std::string_view word) {
    return word.starts_with('.') ? word.substr(1) : word;
}

std::string Translated(const platform::Translator& translator, std::string_view polish) {
    return polish.empty() ? std::string() : text::ToUtf8(translator.Translate(polish.data()));
}

// A form a line, each of which begins with the word.
std::string FormsOf(const std::string& word, std::string_view arguments) {
    std::string forms;
    for (bool more = true; more;) {
        const std::size_t end = std::min(arguments.find('\n'), arguments.size());
        more = end < arguments.size();
        forms += word;
        if (end > 0) forms.append(" ").append(arguments.substr(0, end));
        if (more) forms += '\n';
        arguments.remove_prefix(more ? end + 1 : end);
    }
    return forms;
}

// What the help of the window says: the purpose in the first line, then the forms.
std::pair<std::string, std::string> WindowHelp(const workbench::KeywordHelp& help,
                                               const std::string& word) {
    const std::string text = text::ToUtf8(help.TextOf(WithoutDot(word)));
    const std::size_t end = std::min(text.find('\n'), text.size());
    return {text.substr(0, end), text.substr(std::min(end + 1, text.size()))};
}

}  // namespace

LanguageHelp::LanguageHelp(const platform::Translator& translator) {
    const workbench::KeywordHelp window(translator);
    std::set<std::string> known;
    for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
        m_headings.push_back(Translated(translator, kKinds[kind].heading));
        m_names.push_back(Translated(translator, kKinds[kind].name));
        for (const KnownWord& word : kKinds[kind].words()) {
            const bool isNew = known.emplace(WithoutDot(word.word)).second;
            if (kKinds[kind].isRest && !isNew) continue;
            auto [purpose, usage] = WindowHelp(window, word.word);
            if (!word.purpose.empty()) purpose = Translated(translator, word.purpose);
            if (!word.usage.empty()) usage = Translated(translator, word.usage);
            if (word.isArguments) {
                usage = FormsOf(word.word, Translated(translator, word.usage));
            }
            m_entries.push_back({kind, word.word, std::move(usage), std::move(purpose)});
        }
    }
}

std::string LanguageHelp::List() const {
    std::string list;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries[i];
        const bool isFirst = i == 0 || m_entries[i - 1].kind != entry.kind;
        if (isFirst) list += fmt::format("{}{}\n", i == 0 ? "" : "\n", m_headings[entry.kind]);
        list += entry.purpose.empty() ? fmt::format("  {}\n", entry.word)
                                      : fmt::format("  {:<26}{}\n", entry.word, entry.purpose);
    }
    return list;
}

std::string LanguageHelp::TextOf(std::string_view word) const {
    const std::string upper = text::ToUpper(WithoutDot(word));
    std::string texts;
    for (const Entry& entry : m_entries) {
        if (WithoutDot(entry.word) != upper) continue;
        if (!texts.empty()) texts += '\n';
        texts += fmt::format("{} ({})\n", entry.word, m_names[entry.kind]);
        for (std::string_view forms = entry.usage; !forms.empty();) {
            const std::size_t end = std::min(forms.find('\n'), forms.size());
            texts += fmt::format("    {}\n", forms.substr(0, end));
            forms.remove_prefix(std::min(end + 1, forms.size()));
        }
        if (!entry.purpose.empty()) texts += entry.purpose + '\n';
    }
    return texts;
}

std::vector<std::string> LanguageHelp::FindNear(std::string_view word) const {
    const std::string upper = text::ToUpper(WithoutDot(word));
    std::vector<std::string_view> words;
    for (const Entry& entry : m_entries) words.push_back(WithoutDot(entry.word));
    std::vector<std::string> near;
    while (near.size() < kMostNear) {
        std::string_view found = text::FindNearestWord(upper, words);
        if (found.empty()) {
            const auto holds = [&upper](std::string_view one) {
                return one.find(upper) != std::string_view::npos;
            };
            const auto one = std::ranges::find_if(words, holds);
            if (upper.empty() || one == words.end()) break;
            found = *one;
        }
        near.emplace_back(found);
        std::erase(words, found);
    }
    return near;
}

}  // namespace kalvex::run
