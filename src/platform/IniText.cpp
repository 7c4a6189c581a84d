#include "platform/IniText.h"

#include <algorithm>

#include "text/CodePage.h"
#include "text/Trim.h"
#include "text/Utf8.h"

namespace kalvex::platform {

namespace {

constexpr std::string_view kLineEnds = "\r\n";

bool IsQuoted(std::string_view value) {
    return value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
           value.front() == value.back();
}

std::string Quote(std::string_view value) {
    const bool plain = text::Trim(value) == value && !IsQuoted(value);
    return plain ? std::string(value) : '"' + std::string(value) + '"';
}

bool IsOneLine(std::string_view text) {
    return text.find_first_of(kLineEnds) == std::string_view::npos;
}

bool IsSectionName(std::string_view name) {
    return IsOneLine(name) && text::Trim(name) == name && name.find(']') == std::string_view::npos;
}

bool IsEntry(std::string_view key, std::string_view value) {
    return !key.empty() && IsOneLine(key) && IsOneLine(value) && text::Trim(key) == key &&
           key.find('=') == std::string_view::npos &&
           std::string_view("[;#").find(key.front()) == std::string_view::npos;
}

}  // namespace

IniText::Line IniText::ParseLine(std::string_view text) {
    Line line{std::string(text), IniKind::Other, {}};
    line.length = text.find_last_not_of(kLineEnds) + 1;
    const std::string_view whole = text.substr(0, line.length);
    const std::string_view content = text::Trim(whole);
    if (content.empty()) {
        line.kind = IniKind::Blank;
    } else if (content.front() == ';' || content.front() == '#') {
        line.kind = IniKind::Comment;
    } else if (content.front() == '[') {
        const std::size_t end = content.find(']');
        if (end == std::string_view::npos) return line;
        line.kind = IniKind::Heading;
        line.name = text::Trim(content.substr(1, end - 1));
    } else if (const std::size_t sign = whole.find('='); sign != std::string_view::npos) {
        line.kind = IniKind::Entry;
        line.name = text::Trim(whole.substr(0, sign));
        line.value =
            std::min(whole.find_first_not_of(text::kBlanksAndTabs, sign + 1), whole.size());
    }
    return line;
}

std::string IniText::ValueOf(const Line& line) {
    std::string_view value =
        text::Trim(std::string_view(line.text).substr(line.value, line.length - line.value));
    if (IsQuoted(value)) value = value.substr(1, value.size() - 2);
    return std::string(value);
}

IniText::IniText(std::string_view content) {
    if (content.starts_with(text::kUtf8Mark)) {
        m_mark = text::kUtf8Mark;
        content.remove_prefix(text::kUtf8Mark.size());
    }
    const std::size_t firstEnd = content.find('\n');
    const bool plain =
        firstEnd != std::string_view::npos && (firstEnd == 0 || content[firstEnd - 1] != '\r');
    m_lineEnd = plain ? "\n" : "\r\n";
    while (!content.empty()) {
        const std::size_t end = std::min(content.find('\n'), content.size() - 1) + 1;
        m_lines.push_back(ParseLine(content.substr(0, end)));
        content.remove_prefix(end);
    }
}

bool IniText::IsBinary(std::string_view content) {
    return content.find('\0') != std::string_view::npos;
}

std::string IniText::GetContent() const {
    std::string content = m_mark;
    for (const Line& line : m_lines) content += line.text;
    return content;
}

std::vector<bool> IniText::LinesOf(std::string_view section) const {
    std::vector<bool> lines;
    bool inside = false;
    for (const Line& line : m_lines) {
        if (line.kind == IniKind::Heading) inside = text::EqualNoCase(line.name, section);
        lines.push_back(inside);
    }
    return lines;
}

ProfileEntries IniText::GetSection(std::string_view section) const {
    ProfileEntries entries;
    const std::vector<bool> inside = LinesOf(section);
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const Line& line = m_lines[i];
        if (inside[i] && line.kind == IniKind::Entry)
            entries.emplace_back(line.name, ValueOf(line));
    }
    return entries;
}

std::vector<IniLine> IniText::GetLines() const {
    std::vector<IniLine> lines;
    std::string section;
    for (const Line& line : m_lines) {
        IniLine& read = lines.emplace_back(IniLine{line.kind, {}, {}, {}});
        if (line.kind == IniKind::Heading) section = line.name;
        read.section = section;
        if (line.kind != IniKind::Entry) continue;
        read.key = line.name;
        read.value = ValueOf(line);
    }
    return lines;
}

std::optional<std::string> IniText::Get(std::string_view section, std::string_view key) const {
    for (auto& [name, value] : GetSection(section)) {
        if (text::EqualNoCase(name, key)) return std::move(value);
    }
    return std::nullopt;
}

int IniText::FindLine(std::string_view section, std::string_view key) const {
    const std::vector<bool> inside = LinesOf(section);
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const Line& line = m_lines[i];
        if (inside[i] && line.kind == IniKind::Entry && text::EqualNoCase(line.name, key))
            return static_cast<int>(i) + 1;
    }
    return 0;
}

bool IniText::Set(std::string_view section, std::string_view key, std::string_view value) {
    if (!IsSectionName(section) || !IsEntry(key, value)) return false;
    Put(section, key, value);
    return true;
}

bool IniText::SetSection(std::string_view section, const ProfileEntries& entries) {
    const auto isEntry = [](const auto& entry) { return IsEntry(entry.first, entry.second); };
    if (!IsSectionName(section) || !std::ranges::all_of(entries, isEntry)) return false;
    for (const auto& [key, value] : GetSection(section)) {
        const auto isKey = [&key = key](const auto& entry) {
            return text::EqualNoCase(entry.first, key);
        };
        if (std::ranges::none_of(entries, isKey)) Remove(section, key);
    }
    for (const auto& [key, value] : entries) Put(section, key, value);
    return true;
}

void IniText::Put(std::string_view section, std::string_view key, std::string_view value) {
    const std::vector<bool> inside = LinesOf(section);
    std::size_t behind = 0;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const Line& line = m_lines[i];
        if (!inside[i] || (line.kind != IniKind::Entry && line.kind != IniKind::Heading)) continue;
        if (line.kind == IniKind::Entry && text::EqualNoCase(line.name, key)) {
            const std::string end = line.text.substr(line.length);
            m_lines[i] = ParseLine(line.text.substr(0, line.value) + Quote(value) + end);
            return;
        }
        behind = i + 1;
    }
    if (behind == 0) {
        AppendHeading(section);
        behind = m_lines.size();
    }
    InsertLine(behind, std::string(key) + '=' + Quote(value));
}

void IniText::AppendHeading(std::string_view section) {
    if (!m_lines.empty() && m_lines.back().kind != IniKind::Blank) {
        InsertLine(m_lines.size(), {});
    }
    InsertLine(m_lines.size(), '[' + std::string(section) + ']');
}

void IniText::InsertLine(std::size_t index, std::string_view text) {
    if (index > 0 && !m_lines[index - 1].text.ends_with('\n')) {
        m_lines[index - 1].text += m_lineEnd;
    }
    m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(index),
                   ParseLine(std::string(text) + m_lineEnd));
}

void IniText::Remove(std::string_view section, std::string_view key) {
    const std::vector<bool> inside = LinesOf(section);
    for (std::size_t i = m_lines.size(); i-- > 0;) {
        const Line& line = m_lines[i];
        if (inside[i] && line.kind == IniKind::Entry && text::EqualNoCase(line.name, key)) {
            m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
}

void IniText::RemoveSection(std::string_view section) {
    const std::vector<bool> inside = LinesOf(section);
    bool ofNext = false;  // a comment here belongs to the heading below
    for (std::size_t i = m_lines.size(); i-- > 0;) {
        const IniKind kind = m_lines[i].kind;
        ofNext = (kind == IniKind::Heading && !inside[i]) || (ofNext && kind == IniKind::Comment);
        if (inside[i] && !ofNext) {
            m_lines.erase(m_lines.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
}

}  // namespace kalvex::platform
