#include "host/DataFile.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "text/LineScanner.h"
#include "text/WholeNumber.h"

namespace kalvex::host {

namespace {

constexpr std::size_t kHeaderLimit = 80;
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kSpaces = " \t\v\f\r";

// Takes a line off the text, without its line end.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (end != std::string_view::npos && line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

bool IsHeaderCharacter(char c) {
    return text::IsLetterOrDigit(c) || c == '-' || c == '.' || c == '_' || c == '@';
}

bool IsNameCharacter(char c) {
    const bool printable = c >= ' ' && c <= '~';
    return c != ':' && (printable || c == '\t' || text::IsLetterOrDigit(c));
}

// The name of a line that writing replaces: something stands behind the colon.
std::optional<std::string_view> WrittenName(std::string_view line) {
    const auto end = std::ranges::find_if_not(line, IsNameCharacter);
    const auto length = static_cast<std::size_t>(end - line.begin());
    if (length == 0 || length == line.size() || line[length] != ':') return std::nullopt;
    if (line.find_first_not_of(kSpaces, length + 1) == std::string_view::npos) return std::nullopt;
    return text::TrimBlanks(line.substr(0, length));
}

// The number of a header such as [12]; 0 for any other name.
std::int64_t HeaderNumber(std::string_view name) {
    const auto number = text::ReadWholeNumber<std::int64_t>(name);
    return number && *number > 0 && *number < INT64_MAX ? *number : 0;
}

class DataRewriter {
  public:
    DataRewriter(std::string_view section, std::span<const DataEntry> entries)
        : m_section(section), m_entries(entries), m_written(entries.size(), false) {
        for (std::size_t i = 0; i < entries.size(); ++i) m_byName.emplace(entries[i].name, i);
    }

    RewrittenData Rewrite(std::string_view text) {
        m_result.text.reserve(text.size() + text.size() / 8);
        while (!text.empty()) TakeOver(TakeLine(text));
        if (m_place == Place::Inside) WriteMissing();
        if (m_place == Place::Before) WriteNewSection();
        return std::move(m_result);
    }

  private:
    enum class Place { Before, Inside, Behind };

    void Write(std::string_view line) {
        m_result.text += line;
        m_result.text += kLineEnd;
    }

    void TakeOver(std::string_view line) {
        if (m_place == Place::Inside && TakeOverInside(line)) return;
        if (m_place == Place::Before) {
            if (const auto name = HeaderName(line)) {
                if (m_section.empty()) {
                    m_highest = std::max(m_highest, HeaderNumber(*name));
                } else if (*name == m_section) {
                    m_place = Place::Inside;
                }
            }
        }
        Write(line);
    }

    // False for the header that ends the section.
    bool TakeOverInside(std::string_view line) {
        if (const auto name = WrittenName(line)) {
            const auto found = m_byName.find(*name);
            if (found != m_byName.end() && m_entries[found->second].line) {
                Write(*m_entries[found->second].line);
                m_written[found->second] = true;
                return true;
            }
        } else if (HeaderName(line)) {
            WriteMissing();
            m_place = Place::Behind;
            return false;
        }
        Write(line);
        m_result.hasMore = true;
        return true;
    }

    void WriteMissing() {
        for (std::size_t i = 0; i < m_entries.size(); ++i) {
            if (!m_written[i] && m_entries[i].line) Write(*m_entries[i].line);
        }
    }

    void WriteNewSection() {
        const std::string name =
            m_section.empty() ? std::to_string(m_highest + 1) : std::string(m_section);
        Write('[' + name + ']');
        WriteMissing();
        m_result.hasMore = true;
    }

    std::string_view m_section;
    std::span<const DataEntry> m_entries;
    std::unordered_map<std::string_view, std::size_t> m_byName;
    std::vector<bool> m_written;
    Place m_place = Place::Before;
    std::int64_t m_highest = 0;
    RewrittenData m_result;
};

}  // namespace

std::optional<std::string_view> HeaderName(std::string_view line) {
    if (!line.starts_with('[')) return std::nullopt;
    const std::string_view shown = line.substr(1, kHeaderLimit);
    const auto end = std::ranges::find_if_not(shown, IsHeaderCharacter);
    const std::string_view name = shown.substr(0, static_cast<std::size_t>(end - shown.begin()));
    const bool closed =
        name.size() == kHeaderLimit || line.substr(1 + name.size()).starts_with(']');
    if (name.empty() || !closed) return std::nullopt;
    return name;
}

std::string BackupPath(std::string_view path) {
    const std::string backup = std::string(path.substr(0, path.rfind('.'))) + ".bak";
    return backup == path ? std::string() : backup;
}

void ReadDataLines(
    std::string_view text, std::string_view section,
    const std::function<void(std::string_view name, std::string_view value)>& assign) {
    bool inside = section.empty();
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        const std::size_t colon = line.find(':');
        if (colon != std::string_view::npos) {
            if (inside) assign(text::TrimBlanks(line.substr(0, colon)), line.substr(colon + 1));
        } else if (const auto name = HeaderName(line); name && !section.empty()) {
            if (inside) return;
            inside = *name == section;
        }
    }
}

RewrittenData RewriteData(std::string_view text, std::string_view section,
                          std::span<const DataEntry> entries) {
    return DataRewriter(section, entries).Rewrite(text);
}

}  // namespace kalvex::host
