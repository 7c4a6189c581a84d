#include "engine/ScriptText.h"

#include <gmock/gmock.h>

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

std::vector<std::string> Lines(const LineList& text) {
    std::vector<std::string> lines;
    for (int n = 0; n < text.GetLineCount(); ++n) lines.emplace_back(text.GetLine(n));
    return lines;
}

TEST(ScriptTextTest, EmptyTextIsOneEmptyLine) {
    LineList text;
    EXPECT_THAT(Lines(text), ElementsAre(""));
    text.SetText("");
    EXPECT_THAT(Lines(text), ElementsAre(""));
    EXPECT_EQ(text.GetText(), "");
}

TEST(ScriptTextTest, AnEndOfLineAtTheEndLeavesAnEmptyLine) {
    LineList text;
    text.SetText("a\r\nb\r\n");
    EXPECT_THAT(Lines(text), ElementsAre("a", "b", ""));
    EXPECT_EQ(text.GetText(), "a\r\nb\r\n");
    text.SetText("a\r\nb");
    EXPECT_THAT(Lines(text), ElementsAre("a", "b"));
    EXPECT_EQ(text.GetText(), "a\r\nb");
}

TEST(ScriptTextTest, LoneLineFeedEndsALineAndLoneCarriageReturnDoesNot) {
    LineList text;
    text.SetText("a\nb\rc\n");
    EXPECT_THAT(Lines(text), ElementsAre("a", "b\rc", ""));
    EXPECT_EQ(text.GetText(), "a\r\nb\rc\r\n");
}

TEST(ScriptTextTest, EveryByteIsKept) {
    std::string bytes;
    for (int c = 0; c < 256; ++c) {
        if (c != '\n' && c != '\r') bytes += static_cast<char>(c);
    }
    LineList text;
    text.SetText(bytes);
    EXPECT_EQ(text.GetText(), bytes);
}

TEST(ScriptTextTest, ReplacingTakesTheLineAndItsEnd) {
    LineList text;
    text.SetText("a\r\nb\r\nc");
    text.InsertScriptText(1, "x\n", true);
    EXPECT_THAT(Lines(text), ElementsAre("a", "x", "c"));
    text.InsertScriptText(0, "p\r\nq\r\n", true);
    EXPECT_THAT(Lines(text), ElementsAre("p", "q", "x", "c"));
}

TEST(ScriptTextTest, ReplacingTheLastLineAddsTheEndThatItLacked) {
    LineList text;
    text.SetText("a\r\nb");
    text.InsertScriptText(1, "x\n", true);
    EXPECT_THAT(Lines(text), ElementsAre("a", "x", ""));
}

TEST(ScriptTextTest, InsertingGoesBehindTheLine) {
    LineList text;
    text.SetText("a\r\nb");
    text.InsertScriptText(0, "x\n", false);
    EXPECT_THAT(Lines(text), ElementsAre("a", "x", "b"));
    text.InsertScriptText(2, "y\n", false);
    EXPECT_THAT(Lines(text), ElementsAre("a", "x", "b", "y"));
    text.InsertScriptText(0, "\n", false);
    EXPECT_THAT(Lines(text), ElementsAre("a", "", "x", "b", "y"));
}

}  // namespace
}  // namespace kalvex::engine
