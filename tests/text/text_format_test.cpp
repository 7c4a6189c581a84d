#include "text/TextFormat.h"

#include <gtest/gtest.h>

namespace kalvex {
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

TEST(TextFormatTest, OtherPercentSignsStay) {
    EXPECT_EQ(FormatText("50% %f %", {"a"}), "50% %f %");
}

}  // namespace
}  // namespace kalvex
