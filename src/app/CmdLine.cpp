#include "app/CmdLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "text/CodePage.h"
#include "text/TextFormat.h"
#include "text/WholeNumber.h"

namespace kalvex::app {

enum class CmdLineValue { None, Integer, Text };

struct CmdLineRow {
    const char* name;  // in upper case
    CmdLineValue value;
    const char* meaning;
};

namespace {

constexpr CmdLineRow kRows[] = {
    {"?", CmdLineValue::None, "lista parametrów"},
    {"RC", CmdLineValue::None, "zdalna konsola działającego modułu"},
    {"D", CmdLineValue::Integer, "opóźnienie autostartu w sekundach"},
    {"X", CmdLineValue::Integer, "poziom uprawnień od 0 do 100"},
    {"C", CmdLineValue::None, "nie jest wspierana, zastępuje ją INST"},
    {"INST", CmdLineValue::Integer, "numer instancji"},
    {"NOLOGIN", CmdLineValue::None, "autostart bez logowania"},
    {"U", CmdLineValue::Text, "logowanie: użytkownik:hasło"},
    {"Q", CmdLineValue::None, "pytanie przed zamknięciem"},
    {"P", CmdLineValue::None, "bez znaczenia"},
    {"MIRROR", CmdLineValue::None, "bez znaczenia"},
};

constexpr const char* kValueNames[] = {nullptr, "liczba", "tekst"};

char UpperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

const CmdLineRow* FindRow(std::string_view name) {
    for (const CmdLineRow& row : kRows) {
        if (std::ranges::equal(name, std::string_view(row.name), {}, UpperAscii, UpperAscii)) {
            return &row;
        }
    }
    return nullptr;
}

bool IsOption(std::string_view argument) {
    return argument.size() > 1 && (argument.front() == '/' || argument.front() == '-');
}

}  // namespace

CCmdLine::CCmdLine(const std::vector<std::string>& arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const std::string_view option = IsOption(argument) ? argument.substr(1) : "";
        const std::size_t sign = option.find_first_of(":=");
        const CmdLineRow* row = FindRow(option.substr(0, sign));
        if (row == nullptr) {
            (IsScript(argument) ? m_scripts : m_unknown).emplace_back(argument);
            continue;
        }
        Option& found = m_options.emplace_back(Option{row, {}});
        std::string written(argument);
        if (sign != std::string_view::npos) {
            found.value = option.substr(sign + 1);
        } else if (row->value != CmdLineValue::None && i + 1 < arguments.size()) {
            found.value = arguments[++i];
            written += ' ' + found.value;
        }
        if (row->value == CmdLineValue::Integer && !text::ReadWholeNumber<int>(found.value)) {
            m_withoutNumber.push_back(std::move(written));
        }
    }
}

bool CCmdLine::IsScript(std::string_view argument) {
    constexpr std::string_view kEnding = ".KX";
    return argument.size() > kEnding.size() &&
           std::ranges::equal(argument.substr(argument.size() - kEnding.size()), kEnding, {},
                              UpperAscii);
}

void CCmdLine::PassOverScripts() {
    std::ranges::move(m_scripts, std::back_inserter(m_unknown));
    m_scripts.clear();
}

std::optional<std::string> CCmdLine::FindStranger() const {
    const auto found = std::ranges::find_if(
        m_unknown, [](const std::string& argument) { return !argument.starts_with('/'); });
    if (found == m_unknown.end()) return std::nullopt;
    return *found;
}

const CCmdLine::Option* CCmdLine::Find(std::string_view name) const {
    const CmdLineRow* row = FindRow(name);
    const auto last = std::find_if(m_options.rbegin(), m_options.rend(),
                                   [row](const Option& option) { return option.row == row; });
    return last == m_options.rend() ? nullptr : &*last;
}

std::optional<std::string> CCmdLine::GetStringOption(std::string_view name) const {
    const Option* option = Find(name);
    if (option == nullptr) return std::nullopt;
    return option->value;
}

std::optional<int> CCmdLine::GetIntOption(std::string_view name) const {
    const Option* option = Find(name);
    if (option == nullptr) return std::nullopt;
    return text::ReadWholeNumber<int>(option->value);
}

std::vector<std::string> CCmdLine::GetWarnings(const platform::Translator& translator) const {
    std::vector<std::string> warnings;
    const auto warn = [&](const std::string& text, const std::vector<std::string>& arguments) {
        if (arguments.empty()) return;
        const std::string list = fmt::format("{}", fmt::join(arguments, " "));
        warnings.push_back(text::FormatText(text, {text::FromUtf8(list)}));
    };
    warn(translator.Translate("Pominięte parametry wiersza poleceń: %s"), m_unknown);
    warn(translator.Translate("Pominięte parametry wiersza poleceń, które wymagają liczby: %s"),
         m_withoutNumber);
    return warnings;
}

std::string CCmdLine::GetHelp(const platform::Translator& translator) {
    std::string help;
    for (const CmdLineRow& row : kRows) {
        std::string form = fmt::format("/{}", row.name);
        if (const char* value = kValueNames[static_cast<std::size_t>(row.value)]) {
            form += ':' + translator.Translate(value);
        }
        help += fmt::format("{:<14}{}\n", form, translator.Translate(row.meaning));
    }
    return help;
}

}  // namespace kalvex::app
