#include "workbench/model/TextDifference.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>

namespace kalvex::workbench {

namespace {

constexpr int kMostEdits = 400;  // of a stretch without a line that is there once on either side
constexpr int kMostDepth = 60;

std::vector<std::string_view> LinesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    for (;;) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.push_back(line);
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + 1);
    }
}

// Stretches of both texts, their ends not included.
struct Stretch {
    int left;
    int leftEnd;
    int right;
    int rightEnd;

    bool IsEmpty() const { return left == leftEnd || right == rightEnd; }
};

// Finds for the lines of the left text, which are numbers here, those of the right that stay.
class Matching {
  public:
    Matching(std::vector<int> left, std::vector<int> right, int numbers)
        : m_left(std::move(left)),
          m_right(std::move(right)),
          m_matches(m_left.size(), -1),
          m_places(static_cast<std::size_t>(numbers)) {}

    std::vector<int> Find() {
        Match({0, static_cast<int>(m_left.size()), 0, static_cast<int>(m_right.size())}, 0);
        return std::move(m_matches);
    }

  private:
    struct Pair {
        int left;
        int right;
        int before = -1;  // the one that precedes it in the longest row of pairs
    };
    // By diagonal (left minus right), from the least: how far left so many edits come.
    using Reached = std::vector<int>;
    static constexpr int kNowhere = -1;
    struct Step {
        int left;
        int diagonal;  // from which it comes
    };
    struct Place {
        int left = 0;  // how often on either side
        int right = 0;
        int at = 0;  // on the right
    };

    int Left(int i) const { return m_left[static_cast<std::size_t>(i)]; }
    int Right(int i) const { return m_right[static_cast<std::size_t>(i)]; }
    void Keep(int left, int right) { m_matches[static_cast<std::size_t>(left)] = right; }

    void Match(Stretch at, int depth);
    std::vector<Pair> FindAnchors(const Stretch& at);
    void MatchByEdits(const Stretch& at);
    static Step ComeFrom(const Stretch& at, const Reached& last, int diagonal);
    void KeepEdits(const Stretch& at, const std::vector<Reached>& reached, int diagonal);

    std::vector<int> m_left;
    std::vector<int> m_right;
    std::vector<int> m_matches;
    std::vector<Place> m_places;  // of each number, all 0 between uses
};

void Matching::Match(Stretch at, int depth) {
    while (!at.IsEmpty() && Left(at.left) == Right(at.right)) Keep(at.left++, at.right++);
    while (!at.IsEmpty() && Left(at.leftEnd - 1) == Right(at.rightEnd - 1))
        Keep(--at.leftEnd, --at.rightEnd);
    if (at.IsEmpty()) return;
    const std::vector<Pair> anchors = depth < kMostDepth ? FindAnchors(at) : std::vector<Pair>();
    if (anchors.empty()) return MatchByEdits(at);
    for (const Pair& anchor : anchors) {
        Keep(anchor.left, anchor.right);
        Match({at.left, anchor.left, at.right, anchor.right}, depth + 1);
        at.left = anchor.left + 1;
        at.right = anchor.right + 1;
    }
    Match(at, depth + 1);
}

// Of the lines that are there once on either side, the longest row that ascends on both.
std::vector<Matching::Pair> Matching::FindAnchors(const Stretch& at) {
    for (int i = at.left; i < at.leftEnd; ++i) ++m_places[static_cast<std::size_t>(Left(i))].left;
    for (int i = at.right; i < at.rightEnd; ++i) {
        Place& place = m_places[static_cast<std::size_t>(Right(i))];
        ++place.right;
        place.at = i;
    }
    std::vector<Pair> pairs;
    std::vector<int> ends;  // of the rows found, by their length: the pair that is furthest left
    for (int i = at.left; i < at.leftEnd; ++i) {
        const Place& place = m_places[static_cast<std::size_t>(Left(i))];
        if (place.left != 1 || place.right != 1) continue;
        const auto end = std::ranges::lower_bound(ends, place.at, {}, [&pairs](int pair) {
            return pairs[static_cast<std::size_t>(pair)].right;
        });
        pairs.push_back({i, place.at, end == ends.begin() ? -1 : *(end - 1)});
        const int added = static_cast<int>(pairs.size()) - 1;
        if (end == ends.end()) {
            ends.push_back(added);
        } else {
            *end = added;
        }
    }
    for (int i = at.left; i < at.leftEnd; ++i) m_places[static_cast<std::size_t>(Left(i))] = {};
    for (int i = at.right; i < at.rightEnd; ++i) m_places[static_cast<std::size_t>(Right(i))] = {};
    std::vector<Pair> row;
    for (int pair = ends.empty() ? -1 : ends.back(); pair >= 0; pair = row.back().before)
        row.push_back(pairs[static_cast<std::size_t>(pair)]);
    std::ranges::reverse(row);
    return row;
}

// The fewest edits, as far as few will do.
void Matching::MatchByEdits(const Stretch& at) {
    const int leftCount = at.leftEnd - at.left;
    const int rightCount = at.rightEnd - at.right;
    const int most = std::min(leftCount + rightCount, kMostEdits);
    std::vector<Reached> reached;
    for (int edits = 0; edits <= most; ++edits) {
        Reached row(static_cast<std::size_t>(2 * edits + 1), kNowhere);
        for (int diagonal = -edits; diagonal <= edits; diagonal += 2) {
            int left = edits == 0 ? 0 : ComeFrom(at, reached.back(), diagonal).left;
            if (left == kNowhere) continue;
            while (left < leftCount && left - diagonal < rightCount &&
                   Left(at.left + left) == Right(at.right + left - diagonal)) {
                ++left;
            }
            row[static_cast<std::size_t>(diagonal + edits)] = left;
            if (left == leftCount && left - diagonal == rightCount) {
                reached.push_back(std::move(row));
                return KeepEdits(at, reached, diagonal);
            }
        }
        reached.push_back(std::move(row));
    }
}

// The better of the two ways by which one more edit comes to a diagonal.
Matching::Step Matching::ComeFrom(const Stretch& at, const Reached& last, int diagonal) {
    const int edits = static_cast<int>(last.size()) / 2;
    const auto comeTo = [&](int other) {
        return other < -edits || other > edits ? kNowhere
                                               : last[static_cast<std::size_t>(other + edits)];
    };
    Step step{kNowhere, 0};
    const int added = comeTo(diagonal + 1);
    if (added != kNowhere && added - diagonal <= at.rightEnd - at.right)
        step = {added, diagonal + 1};
    const int removed = comeTo(diagonal - 1);
    if (removed != kNowhere && removed < at.leftEnd - at.left && removed + 1 > step.left)
        step = {removed + 1, diagonal - 1};
    return step;
}

void Matching::KeepEdits(const Stretch& at, const std::vector<Reached>& reached, int diagonal) {
    for (std::size_t edits = reached.size() - 1;; --edits) {
        const int end =
            reached[edits][static_cast<std::size_t>(diagonal + static_cast<int>(edits))];
        const Step step = edits == 0 ? Step{0, 0} : ComeFrom(at, reached[edits - 1], diagonal);
        for (int left = step.left; left < end; ++left)
            Keep(at.left + left, at.right + left - diagonal);
        if (edits == 0) return;
        diagonal = step.diagonal;
    }
}

// The lines as numbers, equal ones the same.
class Numbering {
  public:
    std::vector<int> NumbersOf(const std::vector<std::string_view>& lines) {
        std::vector<int> numbers;
        numbers.reserve(lines.size());
        for (const std::string_view line : lines)
            numbers.push_back(m_numbers.try_emplace(line, GetCount()).first->second);
        return numbers;
    }
    int GetCount() const { return static_cast<int>(m_numbers.size()); }

  private:
    std::unordered_map<std::string_view, int> m_numbers;
};

}  // namespace

TextDifference::TextDifference(std::string_view left, std::string_view right)
    : m_leftText(left),
      m_rightText(right),
      m_left(LinesOf(m_leftText)),
      m_right(LinesOf(m_rightText)) {
    Numbering numbering;
    std::vector<int> leftNumbers = numbering.NumbersOf(m_left);
    std::vector<int> rightNumbers = numbering.NumbersOf(m_right);
    BuildRows(
        Matching(std::move(leftNumbers), std::move(rightNumbers), numbering.GetCount()).Find());
}

// Of what is between two lines that stay, as many as both sides have count as changed.
void TextDifference::BuildRows(const std::vector<int>& matches) {
    int left = 0;
    int right = 0;
    const auto differ = [&](int leftEnd, int rightEnd) {
        if (left < leftEnd || right < rightEnd)
            m_differences.push_back(static_cast<int>(m_rows.size()));
        while (left < leftEnd && right < rightEnd)
            m_rows.push_back({DifferenceKind::Changed, left++, right++});
        while (left < leftEnd) m_rows.push_back({DifferenceKind::Removed, left++, -1});
        while (right < rightEnd) m_rows.push_back({DifferenceKind::Added, -1, right++});
    };
    for (int line = 0; line < static_cast<int>(matches.size()); ++line) {
        const int match = matches[static_cast<std::size_t>(line)];
        if (match < 0) continue;
        differ(line, match);
        m_rows.push_back({DifferenceKind::Same, left++, right++});
    }
    differ(static_cast<int>(m_left.size()), static_cast<int>(m_right.size()));
}

}  // namespace kalvex::workbench
