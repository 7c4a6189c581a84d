#include "operands/ElementSequence.h"

#include <gmock/gmock.h>

#include <random>
#include <string>
#include <vector>

#include "value/ValueText.h"

namespace kalvex::operands {
namespace {

using testing::ElementsAre;

ElementSequence Make(int count) {
    ElementSequence elements;
    for (int i = 0; i < count; ++i) elements.Append(value::CVal(i));
    return elements;
}

std::vector<int> Numbers(const ElementSequence& elements) {
    std::vector<int> numbers;
    for (const value::CVal& element : elements) numbers.push_back(value::ValueToInt(element));
    return numbers;
}

std::vector<int> NumbersByRow(const ElementSequence& elements) {
    std::vector<int> numbers;
    for (const ElementSequence::Row* row : elements.Rows()) {
        for (const value::CVal& element : *row) numbers.push_back(value::ValueToInt(element));
    }
    return numbers;
}

std::vector<int> NumbersByIndex(const ElementSequence& elements) {
    std::vector<int> numbers;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        numbers.push_back(value::ValueToInt(elements[i]));
    }
    return numbers;
}

TEST(ElementSequenceTest, BeginsEmpty) {
    const ElementSequence elements;
    EXPECT_TRUE(elements.empty());
    EXPECT_EQ(elements.size(), 0u);
    EXPECT_EQ(elements.begin(), elements.end());
}

TEST(ElementSequenceTest, TakesValuesInAndOutAnywhere) {
    ElementSequence elements = Make(5);
    elements.Insert(2, value::CVal(12));
    elements.Insert(0, value::CVal(10));
    elements.Insert(7, value::CVal(17));
    EXPECT_THAT(Numbers(elements), ElementsAre(10, 0, 1, 12, 2, 3, 4, 17));
    elements.Remove(4);
    elements.Remove(6);
    elements.Remove(0);
    EXPECT_THAT(Numbers(elements), ElementsAre(0, 1, 12, 3, 4));
    EXPECT_EQ(value::ValueToInt(elements.front()), 0);
    EXPECT_EQ(value::ValueToInt(elements.back()), 4);
    elements[1] = value::CVal(21);
    elements[4] = value::CVal(24);
    EXPECT_THAT(Numbers(elements), ElementsAre(0, 21, 12, 3, 24));
    elements.Clear();
    EXPECT_TRUE(elements.empty());
    EXPECT_EQ(elements.size(), 0u);
}

TEST(ElementSequenceTest, WholeOfItLiesInEitherRow) {
    ElementSequence elements = Make(3);
    elements.Insert(2, value::CVal(7));
    elements.Remove(3);
    EXPECT_THAT(Numbers(elements), ElementsAre(0, 1, 7));
    EXPECT_FALSE(elements.empty());
    EXPECT_EQ(value::ValueToInt(elements.back()), 7);
    elements.Remove(2);
    elements.Remove(0);
    elements.Remove(0);
    EXPECT_TRUE(elements.empty());
}

TEST(ElementSequenceTest, OwnElementGoesInWhole) {
    ElementSequence elements;
    for (const char* text : {"ten is long enough to be held apart", "a", "b", "c"}) {
        elements.Append(value::CVal(text));
    }
    elements.Insert(2, elements[0]);
    elements.Append(elements[0]);
    elements.Insert(1, elements[2]);
    std::string joined;
    for (const value::CVal& element : elements) joined += value::ValueToText(element) + ';';
    const std::string held = "ten is long enough to be held apart;";
    EXPECT_EQ(joined, held + held + "a;" + held + "b;c;" + held);
}

TEST(ElementSequenceTest, AgreesWithAPlainRow) {
    std::mt19937 random(7);
    ElementSequence elements;
    std::vector<int> plain;
    for (int step = 0; step < 20000; ++step) {
        const std::size_t place = random() % (plain.size() + 1);
        if (random() % 100 < (step / 2000 % 2 == 0 ? 55u : 45u)) {
            elements.Insert(place, value::CVal(step));
            plain.insert(plain.begin() + static_cast<std::ptrdiff_t>(place), step);
        } else if (place < plain.size()) {
            elements.Remove(place);
            plain.erase(plain.begin() + static_cast<std::ptrdiff_t>(place));
        }
        if (step % 97 == 0) {
            ASSERT_EQ(Numbers(elements), plain) << step;
            ASSERT_EQ(NumbersByRow(elements), plain) << step;
            ASSERT_EQ(NumbersByIndex(elements), plain) << step;
        }
    }
}

}  // namespace
}  // namespace kalvex::operands
