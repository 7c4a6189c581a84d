#include "workbench/model/EditorLines.h"

#include <gtest/gtest.h>

namespace kalvex::workbench {
namespace {

TEST(EditorLinesTest, LinesGoBothWays) {
    for (const std::string line : {"", "LOCAL A", "\xb9\xea\t\x9f", "a\rb\r\r", "\x81\x98?"}) {
        EXPECT_EQ(FromBuffer(ToBuffer(line)), line);
    }
    EXPECT_EQ(ToBuffer("a\rb\x9f"), "a␍bź");
}

TEST(EditorLinesTest, WhatTheCodePageLacksIsFound) {
    EXPECT_EQ(FindForeign("ąę€ \xe2\x90\x8d?\n"), std::nullopt);
    EXPECT_EQ(FindForeign(""), std::nullopt);
    const auto found = FindForeign("ź λμ");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->offset, 3u);
    EXPECT_EQ(found->character, "λ");
    EXPECT_EQ(FindForeign("a😀")->character, "😀");
    EXPECT_EQ(FromBuffer("aλ"), "a?");
}

}  // namespace
}  // namespace kalvex::workbench
