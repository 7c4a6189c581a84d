// Two texts side by side, line by line, with what differs. The time is bounded: where the texts
// have too little in common, a stretch of them counts as replaced as a whole. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kalvex::workbench {

enum class DifferenceKind { Same, Changed, Removed, Added };

// A row has a line on either side or -1; lines count from 0.
struct DifferenceRow {
    DifferenceKind kind = DifferenceKind::Same;
    int left = -1;
    int right = -1;
};

class TextDifference {
  public:
    // Line ends CR LF or LF, which is no difference.
    TextDifference(std::string_view left, std::string_view right);

    const std::vector<DifferenceRow>& Rows() const { return m_rows; }
    // Where a row of another kind than Same follows one of Same, or begins the text.
    const std::vector<int>& Differences() const { return m_differences; }
    std::string_view Left(int line) const { return m_left[static_cast<std::size_t>(line)]; }
    std::string_view Right(int line) const { return m_right[static_cast<std::size_t>(line)]; }

  private:
    void BuildRows(const std::vector<int>& matches);

    std::string m_leftText;
    std::string m_rightText;
    std::vector<std::string_view> m_left;  // into the texts
    std::vector<std::string_view> m_right;
    std::vector<DifferenceRow> m_rows;
    std::vector<int> m_differences;
};

}  // namespace kalvex::workbench
