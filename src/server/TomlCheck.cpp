#include "server/TomlCheck.h"

#include <algorithm>
#include <string>
#include <vector>

#include "text/Utf8.h"

namespace kalvex::server {

namespace {

// Goes through the text once. What is open are the brackets of values, over the line itself.
class Walk {
  public:
    explicit Walk(std::string_view text) : m_text(text) {
        if (m_text.starts_with(text::kUtf8Mark)) m_at = text::kUtf8Mark.size();
    }

    std::optional<TomlFault> Go() {
        while (m_at < m_text.size()) {
            if (!Step())
                return FaultAt(platform::Translatable("znak spoza ASCII poza cudzysłowem"));
            if (m_depth + m_headerParts > kDeepestToml) {
                TomlFault fault = FaultAt(platform::Translatable("zagnieżdżenie głębsze niż %s"));
                fault.reason.values = {std::to_string(kDeepestToml)};
                return fault;
            }
            ++m_at;
        }
        return std::nullopt;
    }

  private:
    struct Level {
        char bracket = 0;   // 0: the line itself
        bool inKey = true;  // up to the "="
        int parts = 1;      // of that key
    };

    bool Step();
    void OnLineEnd();
    void OnDot();
    void OnBracket(char bracket);
    void OnClosing(char bracket);
    void OnNextKey();
    void SkipText();
    bool TextBegins() const;
    TomlFault FaultAt(const char* reason) const;

    Level& Top() { return m_levels.back(); }
    char Before() const { return m_at == 0 ? '\n' : m_text[m_at - 1]; }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::vector<Level> m_levels{{}};
    int m_depth = 1;  // of all levels
    int m_headerParts = 0;
    bool m_inHeader = false;
    bool m_lineIsEmpty = true;
};

// False for a character that has no place there.
bool Walk::Step() {
    const char c = m_text[m_at];
    const bool isBlank = c == ' ' || c == '\t' || c == '\r';
    switch (c) {
        case '\n':
            OnLineEnd();
            return true;
        case '#':
            m_at = std::min(m_text.find('\n', m_at), m_text.size()) - 1;
            break;
        case '"':
        case '\'':
            if (TextBegins()) SkipText();
            break;
        case '[':
        case '{':
            OnBracket(c);
            break;
        case ']':
        case '}':
            OnClosing(c);
            break;
        case '.':
            OnDot();
            break;
        case '=':
            Top().inKey = false;
            break;
        case ',':
            if (Top().bracket == '{') OnNextKey();
            break;
        default:
            if (static_cast<unsigned char>(c) >= 0x80) return false;
    }
    if (!isBlank) m_lineIsEmpty = false;
    return true;
}

void Walk::OnLineEnd() {
    if (m_levels.size() == 1) OnNextKey();
    m_inHeader = false;
    m_lineIsEmpty = true;
}

void Walk::OnDot() {
    if (m_inHeader) {
        ++m_headerParts;
    } else if (Top().inKey) {
        ++Top().parts;
        ++m_depth;
    }
}

void Walk::OnBracket(char bracket) {
    const bool isHeader = m_levels.size() == 1 && m_lineIsEmpty && bracket == '[';
    if (isHeader) {
        m_inHeader = true;
        m_headerParts = 1;
        return;
    }
    if (m_inHeader || Top().inKey) return;
    m_levels.push_back({bracket, bracket == '{', bracket == '{' ? 1 : 0});
    m_depth += 1 + Top().parts;
}

void Walk::OnClosing(char bracket) {
    m_inHeader = false;
    if (m_levels.size() == 1 || Top().bracket != (bracket == ']' ? '[' : '{')) return;
    m_depth -= 1 + Top().parts;
    m_levels.pop_back();
}

void Walk::OnNextKey() {
    m_depth -= Top().parts - 1;
    Top().parts = 1;
    Top().inKey = true;
}

// Behind anything else a quote is a mistake, and opens nothing.
bool Walk::TextBegins() const {
    constexpr std::string_view kBefore = " \t\r\n=[{,";
    return kBefore.find(Before()) != std::string_view::npos ||
           (Before() == '.' && (m_inHeader || m_levels.back().inKey));
}

// Leaves the place at the last character of the text, or of the line that does not close it.
void Walk::SkipText() {
    const char quote = m_text[m_at];
    const std::string three(3, quote);
    const bool hasLines = m_text.substr(m_at).starts_with(three);
    const bool hasEscapes = quote == '"';
    for (m_at += hasLines ? 3 : 1; m_at < m_text.size(); ++m_at) {
        if (m_text[m_at] == '\\' && hasEscapes && !m_text.substr(m_at + 1).starts_with('\n')) {
            ++m_at;
        } else if (m_text[m_at] == '\n' && !hasLines) {
            break;
        } else if (hasLines && m_text.substr(m_at).starts_with(three)) {
            // Up to two quotes more belong to the text.
            m_at += 3;
            for (int more = 0; more < 2 && m_at < m_text.size() && m_text[m_at] == quote; ++more)
                ++m_at;
            break;
        } else if (m_text[m_at] == quote && !hasLines) {
            ++m_at;
            break;
        }
    }
    --m_at;
}

TomlFault Walk::FaultAt(const char* reason) const {
    const std::string_view before = m_text.substr(0, m_at);
    const std::size_t lineStart = before.rfind('\n') + 1;
    std::string_view line = before.substr(lineStart);
    if (lineStart == 0 && line.starts_with(text::kUtf8Mark))
        line.remove_prefix(text::kUtf8Mark.size());
    int column = 1;
    for (; !line.empty(); ++column) text::TakeCharacter(line);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    return {static_cast<int>(lines) + 1, column, {reason}};
}

}  // namespace

std::optional<TomlFault> CheckToml(std::string_view text) {
    return Walk(text).Go();
}

}  // namespace kalvex::server
