// Two texts side by side.
#include "workbench/model/TextDifference.h"

#include <gmock/gmock.h>

#include <random>

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Told(const TextDifference& difference) {
    static constexpr char kSigns[] = {'=', '~', '-', '+'};
    std::vector<std::string> told;
    for (const DifferenceRow& row : difference.Rows()) {
        std::string text(1, kSigns[static_cast<int>(row.kind)]);
        if (row.left >= 0) text += " " + std::string(difference.Left(row.left));
        if (row.right >= 0) text += " | " + std::string(difference.Right(row.right));
        told.push_back(text);
    }
    return told;
}

TEST(TextDifferenceTest, EqualTextsWhateverTheirLineEnds) {
    const TextDifference difference("a\r\nb\r\n", "a\nb\n");
    EXPECT_THAT(Told(difference), ElementsAre("= a | a", "= b | b", "=  | "));
    EXPECT_THAT(difference.Differences(), IsEmpty());
}

TEST(TextDifferenceTest, LinesAddedRemovedAndChanged) {
    const TextDifference difference("a\nb\nc\nd\ne", "x\na\nc\nD\nD2\ne\nf");
    EXPECT_THAT(Told(difference), ElementsAre("+ | x", "= a | a", "- b", "= c | c", "~ d | D",
                                              "+ | D2", "= e | e", "+ | f"));
    EXPECT_THAT(difference.Differences(), ElementsAre(0, 2, 4, 7));
}

TEST(TextDifferenceTest, RepeatedLinesTakeTheFewestEdits) {
    const TextDifference difference("a\nb\na\nb\na\nb", "b\na\nb\na\nb\nb");
    EXPECT_THAT(Told(difference),
                ElementsAre("- a", "= b | b", "= a | a", "= b | b", "= a | a", "+ | b", "= b | b"));
}

TEST(TextDifferenceTest, NothingInCommon) {
    EXPECT_THAT(Told({"a\nb", "c"}), ElementsAre("~ a | c", "- b"));
    EXPECT_THAT(Told({"", "c"}), ElementsAre("~  | c"));
}

// Each line of both texts is in one row, in order, and rows that are the same hold the same.
void ExpectWhole(const TextDifference& difference, int leftCount, int rightCount) {
    int left = 0;
    int right = 0;
    for (const DifferenceRow& row : difference.Rows()) {
        if (row.left >= 0) {
            EXPECT_EQ(row.left, left++);
        }
        if (row.right >= 0) {
            EXPECT_EQ(row.right, right++);
        }
        if (row.kind == DifferenceKind::Same) {
            EXPECT_EQ(difference.Left(row.left), difference.Right(row.right));
        }
    }
    EXPECT_EQ(left, leftCount);
    EXPECT_EQ(right, rightCount);
}

std::string Lines(const std::vector<int>& numbers) {
    std::string text;
    for (const int number : numbers) {
        if (!text.empty()) text += '\n';
        text += "L" + std::to_string(number);
    }
    return text;
}

std::size_t CommonLength(const std::vector<int>& left, const std::vector<int>& right) {
    std::vector<std::vector<std::size_t>> length(left.size() + 1,
                                                 std::vector<std::size_t>(right.size() + 1));
    for (std::size_t i = 0; i < left.size(); ++i) {
        for (std::size_t j = 0; j < right.size(); ++j) {
            length[i + 1][j + 1] = left[i] == right[j]
                                       ? length[i][j] + 1
                                       : std::max(length[i][j + 1], length[i + 1][j]);
        }
    }
    return length[left.size()][right.size()];
}

TEST(TextDifferenceTest, WithoutLinesThatAreThereOnceItIsTheFewestEdits) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        std::vector<int> left(1 + random() % 20);
        std::vector<int> right(1 + random() % 20);
        for (int& number : left) number = static_cast<int>(random() % 3);
        for (int& number : right) number = static_cast<int>(random() % 3);
        // Every number is there twice or more, so no line serves as an anchor at first.
        for (int number : {0, 1, 2}) {
            left.insert(left.end(), 2, number);
            right.insert(right.begin(), 2, number);
        }
        const TextDifference difference(Lines(left), Lines(right));
        ExpectWhole(difference, static_cast<int>(left.size()), static_cast<int>(right.size()));
        const auto same =
            std::ranges::count(difference.Rows(), DifferenceKind::Same, &DifferenceRow::kind);
        EXPECT_EQ(static_cast<std::size_t>(same), CommonLength(left, right))
            << Lines(left) << "\n\n"
            << Lines(right);
    }
}

TEST(TextDifferenceTest, LongTextsOfAnyKindEnd) {
    std::mt19937 random(3);
    for (const int kinds : {2, 40, 1'000'000}) {
        std::vector<int> left(50'000);
        std::vector<int> right(50'000);
        for (int& number : left) number = static_cast<int>(random() % static_cast<unsigned>(kinds));
        for (int& number : right)
            number = static_cast<int>(random() % static_cast<unsigned>(kinds));
        ExpectWhole({Lines(left), Lines(right)}, 50'000, 50'000);
    }
}

TEST(TextDifferenceTest, AFewChangesInALongTextAreFoundAlone) {
    std::vector<int> left(50'000);
    for (int i = 0; i < 50'000; ++i) left[static_cast<std::size_t>(i)] = i % 700;
    std::vector<int> right = left;
    right[10] = -1;
    right.insert(right.begin() + 25'000, -2);
    right.erase(right.begin() + 40'000);
    const TextDifference difference(Lines(left), Lines(right));
    EXPECT_EQ(difference.Differences().size(), 3u);
    EXPECT_EQ(difference.Rows().size(), 50'001u);
}

}  // namespace
}  // namespace kalvex::workbench
