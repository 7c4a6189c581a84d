#include "text/TextFormat.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kalvex::text {
namespace {

TEST(TextFormatTest, PutsArgumentsInTheirPlaces) {
    EXPECT_EQ(FormatText("%s - %s (%s@%s)", {"a", "b", "c", "d"}), "a - b (c@d)");
    EXPECT_EQ(FormatText("kod %d, %u", {"5", "6"}), "kod 5, 6");
    EXPECT_EQ(FormatText("bez miejsc", {}), "bez miejsc");
}

TEST(TextFormatTest, ArgumentsAreNoPatterns) {
    EXPECT_EQ(FormatText("%s %s", {"%s", "x"}), "%s x");
}

TEST(TextFormatTest, TooFewAndTooManyArguments) {
    EXPECT_EQ(FormatText("<%s><%s>", {"a"}), "<a><>");
    EXPECT_EQ(FormatText("<%s>", {"a", "b"}), "<a>");
}

TEST(TextFormatTest, TakesArgumentsInTheOrderThatThePatternTells) {
    EXPECT_EQ(FormatText("%2$s: %1$d", {"5", "b"}), "b: 5");
    EXPECT_EQ(FormatText("%2$s %s %1$s %u", {"a", "b"}), "b a a b");
    EXPECT_EQ(FormatText("<%3$s><%9$s>", {"a", "b"}), "<><>");
}

TEST(TextFormatTest, TakesAsManyArgumentsAsThereAre) {
    const std::vector<std::string> arguments = {"a", "b"};
    EXPECT_EQ(FormatText("%2$s%1$s", arguments), "ba");
    EXPECT_EQ(FormatText("%s%s%s", arguments), "ab");
    EXPECT_EQ(FormatText("%s", arguments), "a");
}

TEST(TextFormatTest, OtherPercentSignsStay) {
    EXPECT_EQ(FormatText("50% %f %", {"a"}), "50% %f %");
    EXPECT_EQ(FormatText("%0$s %1$f %1$ %1 %12$s", {"a"}), "%0$s %1$f %1$ %1 %12$s");
}

}  // namespace
}  // namespace kalvex::text
