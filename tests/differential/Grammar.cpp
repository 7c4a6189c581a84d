#include "differential/Grammar.h"

#include <algorithm>
#include <cctype>

#include "differential/Vocabulary.h"

namespace kalvex::differential {

namespace {

constexpr int kDeepestFormula = 3;

// So many rows at the beginning of the vocabulary are what a careful person writes.
constexpr std::size_t kTameNames = 7;
constexpr std::size_t kTameSuffixes = 7;
constexpr std::size_t kTameSmall = 10;
constexpr std::size_t kTameStatuses = 10;
constexpr std::size_t kTameKinds = 4;
constexpr std::size_t kTameServerVariables = 4;
constexpr std::size_t kTameLiterals = 15;
constexpr std::size_t kTameTexts = 12;
constexpr std::size_t kTameFunctions = 14;
constexpr std::size_t kTameOperators = 24;

// So many of the rows, no one twice.
std::vector<std::string> Some(Choice& choice, std::span<const std::string_view> rows, int count) {
    std::vector<std::string> some;
    for (int i = 0; i < count; ++i) {
        const std::string name(choice.Pick(rows));
        if (std::ranges::find(some, name) == some.end()) some.push_back(name);
    }
    return some;
}

// The words of a line, each with the blanks behind it.
std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words(1);
    for (const char c : line) {
        if (c != ' ' && words.back().ends_with(' ')) words.emplace_back();
        words.back() += c;
    }
    return words;
}

std::string Lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

}  // namespace

Names ChooseNames(Choice& choice, bool wild) {
    Names names;
    names.numbers =
        Some(choice, wild ? PlainNames() : PlainNames().first(kTameNames), choice.Between(2, 5));
    if (choice.Chance(wild ? 75 : 10)) {
        for (std::string& name : Some(choice, OddNames(), choice.Between(1, 3))) {
            names.numbers.push_back(std::move(name));
        }
    }
    names.counters = {"N", "I"};
    names.texts = {"S", "T"};
    if (choice.Chance(20)) names.texts.emplace_back("Opis");
    names.times = {"OD"};
    names.lists = {"L"};
    if (choice.Chance(40)) names.lists.emplace_back("LISTA");
    names.pointers = {"WSK"};
    if (choice.Chance(40)) names.pointers.emplace_back("P2");
    names.remotes = {"R1", "R2"};
    if (choice.Chance(30)) names.remotes.emplace_back("ODCZYT");
    names.labels = {"l0", "l1"};
    if (choice.Chance(50)) {
        for (std::string& label : Some(choice, OddLabels(), choice.Between(1, 2))) {
            names.labels.push_back(std::move(label));
        }
    }
    names.procedures = {"licz"};
    if (choice.Chance(50)) names.procedures.emplace_back("p2");
    return names;
}

void Grammar::AddNumbers(const std::vector<std::string>& names) {
    m_names.numbers.insert(m_names.numbers.end(), names.begin(), names.end());
}

void Grammar::ForgetNumbers(std::size_t count) {
    m_names.numbers.resize(m_names.numbers.size() - count);
}

std::string Grammar::OneOf(const std::vector<std::string>& names) {
    return m_choice.Pick(names);
}

std::string Grammar::OneOf(std::span<const std::string_view> rows, std::size_t tame) {
    if (!m_wild && !m_choice.Chance(2)) rows = rows.first(tame);
    return std::string(m_choice.Pick(rows));
}

std::string Grammar::Expand(std::string_view form) {
    std::string text;
    for (std::size_t i = 0; i < form.size(); ++i) {
        // A format of numbers or times keeps its own letters: those are no forms.
        if (form[i] == '%' && i + 1 < form.size()) {
            text += Make(form[++i]);
        } else {
            text += form[i];
        }
    }
    return text;
}

const std::vector<std::string>* Grammar::NamesOf(char letter) const {
    switch (letter) {
        case 'N':
            return &m_names.numbers;
        case 'C':
            return &m_names.counters;
        case 'T':
            return &m_names.texts;
        case 'D':
            return &m_names.times;
        case 'L':
            return &m_names.lists;
        case 'P':
            return &m_names.pointers;
        case 'R':
            return &m_names.remotes;
        default:
            return nullptr;
    }
}

std::string Grammar::Make(char letter) {
    if (const std::vector<std::string>* names = NamesOf(letter)) return OneOf(*names);
    const auto one = [this](std::span<const std::string_view> rows) {
        return std::string(m_choice.Pick(rows));
    };
    switch (letter) {
        case 'U':
            return AnyName();
        case 'V':
            return (Wild(20) ? AnyName() : OneOf(m_names.numbers)) +
                   OneOf(Suffixes(), kTameSuffixes);
        case 'n':
            return Number();
        case 'i':
            return m_choice.Chance(85) ? OneOf(SmallNumbers(), kTameSmall) : Operand();
        case 't':
            return TextOperand();
        case 'o':
            return m_choice.Chance(70) ? Number() : TextOperand();
        case 'd':
            return m_choice.Chance(70) ? one(TimeWords()) : OneOf(m_names.times);
        case 'x':
            return Expression();
        case 'f':
            return Formula(0);
        case 'c':
            return Condition();
        case 'y':
            return Expand(m_choice.PickWeighted(TextFunctionForms()).text);
        case 'z':
            return Expand(m_choice.PickWeighted(FunctionForms()).text);
        case 's':
            return Wild(15) ? Operand() : OneOf(Statuses(), kTameStatuses);
        case 'e':
            return m_choice.Chance(85) ? one(ScheduleEntries()) : TextOperand();
        case 'b':
            return Label();
        case 'p':
            return Wild(8) ? AnyName() : OneOf(m_names.procedures);
        case 'a':
            return Arguments();
        case 'k':
            return OneOf(Kinds(), kTameKinds);
        case 'w':
            return Wild(15) ? TextOperand() : one(Spans());
        case 'g':
            return one(NumberFormats());
        case 'h':
            return one(TimeFormats());
        case 'q':
            return '"' + AnyName() + '"';
        case 'm':
            return OneOf(ServerVariables(), kTameServerVariables);
        case '=':
            return one(Comparisons());
        default:
            return std::string("%") + letter;
    }
}

std::string Grammar::AnyName() {
    const std::vector<std::string>* lists[] = {
        &m_names.numbers, &m_names.numbers,  &m_names.texts,   &m_names.lists, &m_names.counters,
        &m_names.times,   &m_names.pointers, &m_names.remotes, &m_names.labels};
    if (Wild(8) || m_choice.Chance(1)) return "NIEMA";
    if (Wild(8)) return std::string(m_choice.Pick(OddNames()));
    return OneOf(*m_choice.Pick(lists));
}

std::string Grammar::Operand() {
    if (!m_wild && m_choice.Chance(60)) return OneOf(m_names.numbers);
    return Expand(m_choice.PickWeighted(OperandForms()).text);
}

std::string Grammar::Number() {
    return m_choice.Chance(30) ? OneOf(NumberLiterals(), kTameLiterals) : Operand();
}

std::string Grammar::TextOperand() {
    if (m_choice.Chance(42)) return OneOf(TextLiterals(), kTameTexts);
    if (!m_wild && m_choice.Chance(70)) return OneOf(m_names.texts);
    return Expand(m_choice.PickWeighted(TextOperandForms()).text);
}

std::string Grammar::Expression() {
    if (m_choice.Chance(50)) return Formula(0);
    if (m_choice.Chance(45)) return Make('z');
    if (m_choice.Chance(30)) return Make('y');
    return m_choice.Chance(60) ? Number() : TextOperand();
}

std::string Grammar::Term(int depth) {
    if (Wild(5)) return TextOperand();
    if (depth < kDeepestFormula && m_choice.Chance(14)) {
        const std::string function = OneOf(FormulaFunctions(), kTameFunctions);
        std::string arguments = Formula(depth + 1);
        if (m_choice.Chance(function == "ROUND" ? 95 : m_wild ? 4 : 0))
            arguments += ", " + Make('i');
        const char* open = m_choice.Chance(90) ? "(" : " (";
        return '(' + function + open + arguments + "))";
    }
    if (depth < kDeepestFormula && m_choice.Chance(12)) {
        static constexpr std::string_view kOpens[] = {"(", "(-", "( - ", "(", "((", "NOT(", "-("};
        static constexpr std::string_view kCloses[] = {")", " )", "!)", "~)", "))", ""};
        return OneOf(kOpens, 4) + Formula(depth + 1) + OneOf(kCloses, 4);
    }
    if (m_choice.Chance(3)) return "-" + OneOf(m_names.numbers);
    return Number();
}

std::string Grammar::Formula(int depth) {
    static const int kTerms[] = {1, 2, 2, 2, 3, 3, 4};
    std::string text = Term(depth);
    for (int terms = m_choice.Pick(kTerms); terms > 1; --terms) {
        text += m_choice.Chance(35) ? " + " : OneOf(Operators(), kTameOperators);
        text += Term(depth);
    }
    return text;
}

std::string Grammar::Condition() {
    std::string text = Expand(m_choice.PickWeighted(ConditionForms()).text);
    return m_choice.Chance(4) ? "NOT " + text : text;
}

std::string Grammar::Label() {
    return Wild(3) ? "brak" : OneOf(m_names.labels);
}

std::string Grammar::Arguments() {
    std::string text;
    for (int count = m_choice.Between(0, 4); count > 0; --count) {
        if (m_choice.Chance(95)) {
            text += m_choice.Chance(50)   ? OneOf(m_names.numbers)
                    : m_choice.Chance(50) ? AnyName()
                    : m_choice.Chance(60) ? Operand()
                    : m_choice.Chance(50) ? std::string(m_choice.Pick(TextLiterals()))
                                          : Formula(kDeepestFormula);
        }
        if (count > 1) text += m_choice.Chance(70) ? ", " : ",";
    }
    return text;
}

// One word is lost, comes twice, changes its place, or another one comes in.
std::string Grammar::Damage(const std::string& line) {
    if (line.find("FILL_IN_LIST") != std::string::npos) return line;  // it might never end
    std::vector<std::string> words = Words(line);
    const std::size_t at = m_choice.Below(words.size());
    const auto place = words.begin() + static_cast<std::ptrdiff_t>(at);
    switch (m_choice.Below(6)) {
        case 0:
            words.erase(place);
            break;
        case 1:
            words.insert(place, *place);
            break;
        case 2:
            std::swap(words[at], words[m_choice.Below(words.size())]);
            break;
        case 3:
            words.insert(place, std::string(m_choice.Pick(JunkWords())) + ' ');
            break;
        case 4:
            if (!place->empty()) place->erase(m_choice.Below(place->size()), 1);
            break;
        default:
            *place = Lower(*place);
            break;
    }
    std::string damaged;
    for (const std::string& word : words) damaged += word;
    return damaged;
}

std::string Grammar::Written(std::string line) {
    if (Wild(8)) line = Damage(line);
    if (m_choice.Chance(3)) {
        const std::size_t end = std::min(line.find(' '), line.size());
        line = Lower(line.substr(0, end)) + line.substr(end);
    }
    if (m_choice.Chance(4)) line.insert(0, m_choice.Chance(50) ? "  " : "\t ");
    if (m_choice.Chance(3)) {
        const std::size_t blank = line.find(' ');
        if (blank != std::string::npos) line.insert(blank, m_choice.Chance(50) ? "   " : "\t");
    }
    if (m_choice.Chance(3)) line += m_choice.Chance(50) ? " ; uwaga + 1" : ";";
    if (m_choice.Chance(1)) line += "  ";
    return line;
}

std::string Grammar::Line() {
    const bool source = m_choice.Chance(m_sources ? 40 : 1);
    const Form& form = m_choice.PickWeighted(source ? SourceForms() : StatementForms());
    return Written(Expand(form.text));
}

}  // namespace kalvex::differential
