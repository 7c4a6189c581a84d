#include "programs/glossary/Glossary.h"

#include <functional>
#include <map>
#include <set>

#include "engine/ScriptText.h"
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
#include "workbench/model/KeywordHelp.h"

namespace kalvex::glossary {

namespace {

using platform::Translatable;
using Entries = std::vector<Entry>;
using Lines = std::vector<std::string>;

// Texts of the tables in words. What they leave empty is told by the help of the window, or by
// nobody.
class Texts {
  public:
    explicit Texts(const platform::Translator& translator)
        : m_translator(translator), m_window(translator) {}

    // Of a whole literal, so a null stands behind it.
    std::string InWords(std::string_view polish) const {
        return polish.empty() ? std::string() : text::ToUtf8(m_translator.Translate(polish.data()));
    }

    std::string PurposeOf(std::string_view word, std::string_view help = {}) const {
        return help.empty() ? Window(word).front() : InWords(help);
    }

    Lines WindowFormsOf(std::string_view word) const {
        Lines lines = Window(word);
        lines.erase(lines.begin());
        return lines;
    }

  private:
    // The purpose, then the forms.
    Lines Window(std::string_view word) const {
        return engine::SplitLines(text::ToUtf8(m_window.TextOf(WithoutDot(word))));
    }

    const platform::Translator& m_translator;
    const workbench::KeywordHelp m_window;
};

template <class Rows>
Entries WithForms(const Texts& texts, const Rows& rows) {
    Entries entries;
    for (const auto& row : rows) {
        const std::string word(row.keyword);
        entries.push_back({word, word, engine::SplitLines(texts.InWords(row.usage)),
                           texts.PurposeOf(word, row.help)});
    }
    return entries;
}

Entries Statements(const Texts& texts) {
    return WithForms(texts, language::Statements().Rows());
}

Entries Directives(const Texts& texts) {
    return WithForms(texts, language::Directives());
}

// Their table has the arguments alone.
Entries Functions(const Texts& texts) {
    Entries entries = WithForms(texts, language::Functions().Rows());
    for (Entry& entry : entries) {
        for (std::string& form : entry.forms)
            form.insert(0, entry.word + (form.empty() ? "" : " "));
    }
    return entries;
}

Entries Conditions(const Texts& texts) {
    Entries entries;
    for (const operands::ConditionWordRow& row : operands::ConditionWords()) {
        const std::string word(row.word);
        Lines forms = texts.WindowFormsOf(word);
        if (forms.empty()) {
            forms.push_back(word + ' ' + texts.InWords(Translatable("<zmienna>[.<typ_danych>]")));
        }
        entries.push_back({word, word, std::move(forms), texts.PurposeOf(word, row.help)});
    }
    return entries;
}

// A form of a word that is a property and more than that would be one of the other.
Entries VariableProperties(const Texts& texts) {
    Entries entries;
    for (const std::string_view name : operands::VariablePropertyNames()) {
        const std::string word(name);
        entries.push_back({word, word, {}, texts.PurposeOf(word)});
    }
    return entries;
}

template <class Words>
Entries FromWindow(const Texts& texts, const Words& words) {
    Entries entries;
    for (const std::string_view one : words) {
        const std::string word(one);
        entries.push_back({word, word, texts.WindowFormsOf(word), texts.PurposeOf(word)});
    }
    return entries;
}

Entries ListProperties(const Texts& texts) {
    return FromWindow(texts, operands::ListPropertyNames());
}

// The words between operands, which the help of the window knows among others.
Entries OtherWords(const Texts& texts) {
    return FromWindow(texts, workbench::HelpKeywords());
}

Entries TimeProperties(const Texts& texts) {
    Entries entries;
    for (const operands::TimeProperty& row : operands::TimeProperties()) {
        const std::string word(row.name);
        entries.push_back({word, word, {}, texts.PurposeOf(word, row.help)});
    }
    return entries;
}

Entries DataKinds(const Texts& texts) {
    Entries entries;
    for (const value::ValueKindRow& row : value::ValueKinds()) {
        const std::string word(row.suffix);
        entries.push_back({word, '.' + word, {}, texts.PurposeOf(word, row.help)});
    }
    return entries;
}

Entries ScheduleWords(const Texts&) {
    Entries entries;
    for (const operands::ScheduleWord& row : operands::ScheduleWords()) {
        entries.push_back({std::string(row.word), std::string(row.word)});
    }
    return entries;
}

Entries StatusWords(const Texts& texts) {
    Entries entries;
    for (const value::StatusWord& row : value::StatusWords()) {
        const std::string word(row.word);
        entries.push_back({word,
                           std::to_string(row.bit) + ' ' + word,
                           {},
                           texts.InWords(Translatable("Status zmiennej"))});
    }
    return entries;
}

// As it is written in a formula.
std::string Written(const operands::FormulaOperator& row) {
    if (row.letter == operands::FormulaLetter::UnaryMinus) return "-x";
    return row.function ? std::string(row.text) + "()" : std::string(row.text);
}

// An entry a level, the tightest first.
Entries Operators(const Texts&) {
    std::map<int, std::string, std::greater<>> levels;
    for (const operands::FormulaOperator& row : operands::FormulaOperators()) {
        // TG cannot stand in a formula.
        if (row.apply == nullptr) continue;
        std::string& level = levels[row.binding];
        level.append(level.empty() ? "" : "  ").append(Written(row));
    }
    Entries entries;
    for (const auto& [binding, level] : levels) entries.push_back({level, level});
    return entries;
}

Entries Errors(const Texts& texts) {
    Entries entries;
    for (int code = 0; const auto* row = operands::FindScriptError(code); ++code) {
        const std::string number = std::to_string(code);
        const std::string text = texts.InWords(row->text);
        entries.push_back({number, number + ' ' + text, {}, text});
    }
    return entries;
}

struct SectionRow {
    const char* heading;
    const char* name;
    Layout layout;
    Entries (*gather)(const Texts& texts);
    bool isRest = false;  // only of words that no section before it has
};

constexpr SectionRow kSections[] = {
    {Translatable("Instrukcje"), Translatable("instrukcja"), Layout::Forms, Statements},
    {Translatable("Dyrektywy"), Translatable("dyrektywa"), Layout::Forms, Directives},
    {Translatable("Funkcje"), Translatable("funkcja"), Layout::Forms, Functions},
    {Translatable("Operatory formuł, od najsilniej wiążących"), "", Layout::Lines, Operators},
    {Translatable("Warunki instrukcji IF"), Translatable("warunek"), Layout::Forms, Conditions},
    {Translatable("Właściwości zmiennych"), Translatable("właściwość zmiennej"), Layout::Words,
     VariableProperties},
    {Translatable("Właściwości list i wskaźników"), Translatable("właściwość listy lub wskaźnika"),
     Layout::Words, ListProperties},
    {Translatable("Właściwości czasu"), Translatable("właściwość czasu"), Layout::Words,
     TimeProperties},
    {Translatable("Typy danych"), Translatable("typ danych"), Layout::Words, DataKinds},
    {Translatable("Słowa harmonogramu"), Translatable("słowo harmonogramu"), Layout::Words,
     ScheduleWords},
    {Translatable("Statusy"), Translatable("status"), Layout::Lines, StatusWords},
    {Translatable("Inne słowa"), Translatable("słowo"), Layout::Words, OtherWords, true},
    {Translatable("Błędy skryptu"), Translatable("błąd skryptu"), Layout::Lines, Errors},
};

}  // namespace

std::vector<Section> MakeGlossary(const platform::Translator& translator) {
    const Texts texts(translator);
    std::vector<Section> sections;
    std::set<std::string, std::less<>> known;
    for (const SectionRow& row : kSections) {
        Entries entries = row.gather(texts);
        const auto isKnown = [&known](const Entry& one) {
            return known.contains(WithoutDot(one.word));
        };
        if (row.isRest) std::erase_if(entries, isKnown);
        for (const Entry& entry : entries) known.emplace(WithoutDot(entry.word));
        sections.push_back(
            {texts.InWords(row.heading), texts.InWords(row.name), row.layout, std::move(entries)});
    }
    return sections;
}

std::string_view WithoutDot(std::string_view word) {
    return word.starts_with('.') ? word.substr(1) : word;
}

}  // namespace kalvex::glossary
