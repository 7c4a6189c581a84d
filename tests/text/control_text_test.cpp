#include "text/ControlText.h"

#include <gtest/gtest.h>

#include "text/CodePage.h"

namespace kalvex::text {
namespace {

using namespace std::string_view_literals;

TEST(ControlTextTest, ControlCharactersAreWrittenByNameOrNumber) {
    EXPECT_EQ(EscapeControls("a\nb\rc\td"), "a\\nb\\rc\\td");
    EXPECT_EQ(EscapeControls("\0\x01\x1f \x7e\x7f"sv), "\\x00\\x01\\x1f ~\\x7f");
    EXPECT_EQ(EscapeControls("\x1b[2J"), "\\x1b[2J");
}

TEST(ControlTextTest, BytesThatStandForC1AreControlCharacters) {
    EXPECT_EQ(EscapeControls("\x81\x83\x88\x90\x98"), "\\x81\\x83\\x88\\x90\\x98");
    for (int byte = 0x80; byte < 0x100; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_EQ(EscapeUtf8Controls(ToUtf8(text)), ToUtf8(EscapeControls(text))) << byte;
    }
}

TEST(ControlTextTest, InUtf8TheWholeOfC1IsWrittenByNumber) {
    EXPECT_EQ(EscapeUtf8Controls("\xC2\x80-\xC2\x9B-\xC2\x9F\xC2\xA0"),
              "\\x80-\\x9b-\\x9f\xC2\xA0");
    EXPECT_EQ(EscapeUtf8Controls("a\x1b\x7f\xC2 \xC2"), "a\\x1b\\x7f\xC2 \xC2");
}

TEST(ControlTextTest, OtherCharactersStay) {
    EXPECT_EQ(EscapeUtf8Controls("Zażółć „€” \\n \\"), "Zażółć „€” \\n \\");
    EXPECT_EQ(EscapeControls(FromUtf8("Zażółć „€” \\n \\")), FromUtf8("Zażółć „€” \\n \\"));
}

TEST(ControlTextTest, OneCharacterMayBeKept) {
    EXPECT_EQ(EscapeUtf8Controls("a\tb\nc", '\t'), "a\tb\\nc");
}

TEST(ControlTextTest, NumbersMayHaveTheFormOfJson) {
    EXPECT_EQ(EscapeUtf8Controls("\x7f\xC2\x90", ' ', "\\u00"), "\\u007f\\u0090");
}

TEST(ControlTextTest, TwiceIsAsOnce) {
    const std::string once = EscapeControls("a\nb\x1b\\n");
    EXPECT_EQ(EscapeControls(once), once);
}

}  // namespace
}  // namespace kalvex::text
