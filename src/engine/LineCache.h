// The lines of a started script as its statements read them, and where its labels and procedures
// stand. All lines lie in one buffer, which stays where it is until the next Fill or Clear, and so
// do the views of it. Line numbers count from 0; a text has less than 4 GB.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/ScriptText.h"

namespace kalvex::engine {

class LineCache {
  public:
    void Fill(const ScriptText& text);
    void Clear() { *this = {}; }

    bool IsFilled() const { return !m_lines.empty(); }
    int Count() const { return static_cast<int>(m_lines.size()); }
    // Empty where there is no such line.
    std::string_view Get(int n) const {
        if (static_cast<std::size_t>(n) >= m_lines.size()) return {};
        const Line& line = m_lines[static_cast<std::size_t>(n)];
        return {m_text.get() + line.start, line.length};
    }

    // The first line whose first token is the label, which begins with ":"; -1 for none.
    int FindLabel(std::string_view target) const { return Find(m_labels, target); }
    // The first PROCEDURE line of that name, which is not empty; -1 for none.
    int FindProcedure(std::string_view name) const { return Find(m_procedures, name); }

  private:
    using LineByName = std::unordered_map<std::string_view, int>;

    struct Line {
        std::uint32_t start;
        std::uint32_t length;
    };

    static int Find(const LineByName& lines, std::string_view name) {
        const auto found = lines.find(name);
        return found == lines.end() ? -1 : found->second;
    }
    void NoteName(int n);

    std::unique_ptr<char[]> m_text;
    std::vector<Line> m_lines;
    LineByName m_labels;
    LineByName m_procedures;
};

}  // namespace kalvex::engine
