#include "app/ProfileCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "platform/Files.h"
#include "platform/IniText.h"
#include "text/CodePage.h"
#include "text/NearestWord.h"
#include "text/Trim.h"
#include "text/WholeNumber.h"

namespace kalvex::app {

namespace {

using platform::IniKind;
using platform::IniLine;
using platform::Notice;

constexpr const char* kLineFault = platform::Translatable("Plik %s, wiersz %s: %s");
constexpr const char* kEntryFault = platform::Translatable("Plik %s, wiersz %s, [%s] %s: %s");
constexpr const char* kFaultWithoutLine = platform::Translatable("Plik %s, [%s] %s: %s");

constexpr std::size_t kMostWidths = 7;
constexpr std::string_view kDigits = "0123456789";

bool IsListed(KeyForm form) {
    return form == KeyForm::Scripts || form == KeyForm::Sources;
}

bool AreWidths(std::string_view value) {
    std::size_t count = 0;
    for (value = text::Trim(value); !value.empty(); ++count) {
        const std::size_t end = value.find_first_of(text::kBlanksAndTabs);
        if (!text::ReadWholeNumber<int>(value.substr(0, end))) return false;
        value = end == std::string_view::npos ? "" : text::Trim(value.substr(end));
    }
    return count <= kMostWidths;
}

// A name alone is a source that nobody logs in to.
bool IsSource(std::string_view value) {
    const std::size_t first = value.find(',');
    if (first == 0 || first == std::string_view::npos) return false;
    const std::string_view rest = value.substr(first + 1);
    const std::size_t second = rest.find(',');
    if (second == std::string_view::npos) return rest.empty();
    return second != 0 || rest.size() == 1;
}

Notice FindValueFault(const ProfileKey& row, std::string_view value) {
    if (value.empty()) return {};
    if (row.form == KeyForm::Number) {
        const auto number = text::ReadWholeNumber<int>(value);
        if (number && *number >= row.least && *number <= row.most) return {};
        return {platform::Translatable("oczekiwano liczby całkowitej od %s do %s"),
                {std::to_string(row.least), std::to_string(row.most)}};
    }
    if (row.form == KeyForm::Widths && !AreWidths(value)) {
        return {platform::Translatable("oczekiwano najwyżej siedmiu liczb całkowitych")};
    }
    if (row.form == KeyForm::Sources && !IsSource(value)) {
        return {platform::Translatable(
            "oczekiwano nazwy, użytkownika i hasła, rozdzielonych przecinkami")};
    }
    return {};
}

class ProfileCheck {
  public:
    ProfileCheck(const std::string& path, std::span<const ProfileKey> keys,
                 const platform::Translator& translator)
        : m_path(path), m_keys(keys), m_translator(translator) {}

    std::vector<std::string> Check(const std::vector<IniLine>& lines) {
        for (const IniLine& line : lines) {
            ++m_line;
            if (line.kind == IniKind::Heading) CheckHeading(line);
            if (line.kind == IniKind::Entry) CheckEntry(line);
            if (line.kind == IniKind::Other) {
                TellLine(
                    {platform::Translatable("to ani nagłówek [sekcja], ani wpis klucz=wartość")});
            }
        }
        CheckLists();
        std::ranges::stable_sort(m_faults, {}, &Fault::first);
        std::vector<std::string> texts;
        for (Fault& fault : m_faults) texts.push_back(std::move(fault.second));
        return texts;
    }

  private:
    using Fault = std::pair<int, std::string>;  // the line
    // An entry of a list.
    struct Item {
        int line;
        std::string section;
        std::string key;
        bool hasValue;
    };

    static bool IsOf(const ProfileKey& row, std::string_view section) {
        const std::string name = text::FromUtf8(row.section);
        if (!name.ends_with(' ')) return text::EqualNoCase(name, section);
        return section.size() > name.size() &&
               text::EqualNoCase(name, section.substr(0, name.size()));
    }

    static bool IsKey(const ProfileKey& row, std::string_view key) {
        if (row.form == KeyForm::AnyName) return true;
        const std::string name = text::FromUtf8(row.name);
        return IsListed(row.form) ? NumberIn(key, name).has_value() : text::EqualNoCase(name, key);
    }

    void TellLine(const Notice& fault) {
        const Notice told{kLineFault,
                          {m_path, std::to_string(m_line), InWords(fault, m_translator)}};
        m_faults.emplace_back(m_line, InWords(told, m_translator));
    }

    void TellEntry(int line, const std::string& section, const std::string& key,
                   const Notice& fault) {
        m_faults.emplace_back(
            line, TellEntryFault({m_path, line, text::ToUtf8(section), text::ToUtf8(key)}, fault,
                                 m_translator));
    }

    std::string NearestSection(std::string_view section) const {
        std::vector<std::string_view> names;
        for (const ProfileKey& row : m_keys) names.push_back(row.section);
        return std::string(text::FindNearestWord(section, names));
    }

    // Of a list the number is kept.
    std::string NearestKey(const IniLine& line) const {
        const std::string_view key = line.key;
        const std::string_view digits = key.substr(text::TrimRight(key, kDigits).size());
        const int number = text::ReadWholeNumber<int>(digits).value_or(0);
        std::vector<std::string> names;
        for (const ProfileKey& row : m_keys) {
            if (!IsOf(row, line.section)) continue;
            names.push_back(text::FromUtf8(row.name));
            if (IsListed(row.form)) names.back() += std::to_string(number);
        }
        const std::vector<std::string_view> known(names.begin(), names.end());
        return text::ToUtf8(text::FindNearestWord(key, known));
    }

    void CheckHeading(const IniLine& line) {
        m_isKnown = std::ranges::any_of(
            m_keys, [&](const ProfileKey& row) { return IsOf(row, line.section); });
        if (m_isKnown) return;
        const std::string name = text::ToUtf8(line.section);
        const std::string nearest = NearestSection(line.section);
        if (nearest.empty())
            return TellLine({platform::Translatable("nieznana sekcja [%s]"), {name}});
        TellLine(
            {platform::Translatable("nieznana sekcja [%s], może chodzi o [%s]"), {name, nearest}});
    }

    void CheckEntry(const IniLine& line) {
        const auto tell = [&](const Notice& fault) {
            if (fault) TellEntry(m_line, line.section, line.key, fault);
        };
        if (line.section.empty()) {
            return TellLine({platform::Translatable("wpis stoi przed pierwszą sekcją")});
        }
        if (!m_isKnown) return;
        const auto row = std::ranges::find_if(m_keys, [&](const ProfileKey& known) {
            return IsOf(known, line.section) && IsKey(known, line.key);
        });
        if (row == m_keys.end()) {
            const std::string nearest = NearestKey(line);
            if (nearest.empty()) return tell({platform::Translatable("nieznany klucz")});
            return tell({platform::Translatable("nieznany klucz, może chodzi o %s"), {nearest}});
        }
        const auto [first, isFirst] =
            m_seen.try_emplace({text::ToUpper(line.section), text::ToUpper(line.key)}, m_line);
        if (!isFirst) {
            return tell({platform::Translatable("powtórzony, liczy się wiersz %s"),
                         {std::to_string(first->second)}});
        }
        if (IsListed(row->form)) {
            const int number = *NumberIn(line.key, row->name);
            m_lists[&*row].emplace(number,
                                   Item{m_line, line.section, line.key, !line.value.empty()});
        }
        tell(FindValueFault(*row, line.value));
    }

    void CheckLists() {
        for (const auto& [row, items] : m_lists) {
            int end = 0;
            for (const auto& [number, item] : items) {
                if (number == end && item.hasValue) {
                    ++end;
                } else if (number > end) {
                    TellEntry(item.line, item.section, item.key,
                              {platform::Translatable("nie jest czytany, bo %s nie ma wartości"),
                               {fmt::format("{}{}", row->name, end)}});
                }
            }
        }
    }

    const std::string& m_path;
    const std::span<const ProfileKey> m_keys;
    const platform::Translator& m_translator;
    int m_line = 0;
    bool m_isKnown = false;
    std::map<std::pair<std::string, std::string>, int> m_seen;  // the lines of entries
    std::map<const ProfileKey*, std::map<int, Item>> m_lists;   // by their numbers
    std::vector<Fault> m_faults;
};

}  // namespace

std::optional<int> NumberIn(std::string_view key, std::string_view name) {
    if (key.size() <= name.size() || !text::EqualNoCase(key.substr(0, name.size()), name))
        return {};
    const std::string_view digits = key.substr(name.size());
    const auto number = text::ReadWholeNumber<int>(digits);
    if (!number || *number < 0 || fmt::format("{}", *number) != digits) return {};
    return number;
}

std::string TellEntryFault(const ProfileEntry& entry, const platform::Notice& fault,
                           const platform::Translator& translator) {
    const std::string reason = InWords(fault, translator);
    if (entry.line == 0) {
        return InWords({kFaultWithoutLine, {entry.path, entry.section, entry.key, reason}},
                       translator);
    }
    return InWords(
        {kEntryFault, {entry.path, std::to_string(entry.line), entry.section, entry.key, reason}},
        translator);
}

std::vector<std::string> FindProfileFaults(const std::string& path,
                                           std::span<const ProfileKey> keys,
                                           const platform::Translator& translator) {
    std::string content;
    std::string error;
    if (!platform::ReadWholeFile(path, content, error) || platform::IniText::IsBinary(content)) {
        return {};
    }
    return ProfileCheck(path, keys, translator).Check(platform::IniText(content).GetLines());
}

}  // namespace kalvex::app
