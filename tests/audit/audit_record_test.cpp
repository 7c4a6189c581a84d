#include "audit/AuditRecord.h"

#include <gtest/gtest.h>

#include <string>

#include "support/zone_scope.h"
#include "text/CodePage.h"

namespace kalvex::audit {
namespace {

constexpr std::int64_t kNow = support::Gmt(2024, 3, 10, 6);

AuditEntry FullEntry() {
    return {kNow,
            {.action = AuditAction::Value,
             .script = text::FromUtf8("/srv/kotłownia.kx"),
             .user = "adam",
             .address = "10.1.2.3",
             .client = "stacja.adam.7_RC",
             .name = "TEMP",
             .oldValue = "12.50",
             .newValue = text::FromUtf8("\"gorąco\"")}};
}

constexpr const char* kFullLine =
    R"({"time":"2024-03-10T07:00:00+01:00","seconds":1710050400,"action":"value",)"
    R"("script":"/srv/kotłownia.kx","user":"adam","address":"10.1.2.3",)"
    R"("client":"stacja.adam.7_RC","name":"TEMP","old":"12.50","new":"\"gorąco\""})";

class AuditRecordTest : public testing::Test {
  protected:
    support::ZoneScope m_zone{"Europe/Warsaw"};
};

TEST_F(AuditRecordTest, EveryFieldIsInTheLine) {
    EXPECT_EQ(AuditLine(FullEntry()), std::string(kFullLine) + '\n');
    EXPECT_EQ(ParseAuditLine(kFullLine), FullEntry());
}

TEST_F(AuditRecordTest, WhatARecordHasNotIsNull) {
    const AuditEntry level{kNow,
                           {.action = AuditAction::Level,
                            .user = "adam",
                            .client = "a_RC",
                            .oldValue = "1",
                            .newValue = ""}};
    const std::string line =
        R"({"time":"2024-03-10T07:00:00+01:00","seconds":1710050400,"action":"level",)"
        R"("script":null,"user":"adam","address":"local","client":"a_RC","name":null,)"
        R"("old":"1","new":""})";
    EXPECT_EQ(AuditLine(level), line + '\n');
    EXPECT_EQ(ParseAuditLine(line), level);
    const AuditEntry lost{kNow, {.action = AuditAction::Lost, .newValue = "3"}};
    const std::string lostLine =
        R"({"time":"2024-03-10T07:00:00+01:00","seconds":1710050400,"action":"lost",)"
        R"("script":null,"user":null,"address":null,"client":null,"name":null,)"
        R"("old":null,"new":"3"})";
    EXPECT_EQ(AuditLine(lost), lostLine + '\n');
    EXPECT_EQ(ParseAuditLine(lostLine), lost);
}

TEST_F(AuditRecordTest, TimeHasTheOffsetOfItsZone) {
    const support::ZoneScope zone("America/St_Johns");
    EXPECT_EQ(AuditLine({kNow, {}}).substr(0, 34), R"({"time":"2024-03-10T03:30:00-02:30)");
    EXPECT_EQ(AuditLine({kNow - 86400 * 30, {}}).substr(0, 34),
              R"({"time":"2024-02-09T02:30:00-03:30)");
}

TEST_F(AuditRecordTest, EveryActionHasAWordOfItsOwn) {
    struct Row {
        AuditAction action;
        const char* word;
    };
    constexpr Row kRows[] = {
        {AuditAction::Start, "start"},
        {AuditAction::Stop, "stop"},
        {AuditAction::Reset, "reset"},
        {AuditAction::Step, "step"},
        {AuditAction::Value, "value"},
        {AuditAction::BreakpointSet, "breakpoint-set"},
        {AuditAction::BreakpointRemoved, "breakpoint-removed"},
        {AuditAction::BreakpointsRemoved, "breakpoints-removed"},
        {AuditAction::SessionTaken, "session-taken"},
        {AuditAction::SessionGiven, "session-given"},
        {AuditAction::SessionForced, "session-forced"},
        {AuditAction::SessionsTakenBack, "sessions-taken-back"},
        {AuditAction::Open, "open"},
        {AuditAction::Close, "close"},
        {AuditAction::Level, "level"},
        {AuditAction::Lost, "lost"},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(AuditWord(row.action), row.word);
        const AuditEntry entry{kNow, {.action = row.action, .script = "a.kx"}};
        std::string line = AuditLine(entry);
        line.pop_back();
        EXPECT_EQ(ParseAuditLine(line), entry) << row.word;
        EXPECT_EQ(ConcernsAllScripts(row.action),
                  row.action == AuditAction::SessionsTakenBack || row.action == AuditAction::Lost)
            << row.word;
    }
}

TEST_F(AuditRecordTest, LineIsOneLineWhateverTheTextsAre) {
    AuditEntry entry = FullEntry();
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    entry.record.client = all;
    std::string line = AuditLine(entry);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    EXPECT_TRUE(text::IsUtf8(line));
    line.pop_back();
    EXPECT_EQ(ParseAuditLine(line), entry);
}

TEST_F(AuditRecordTest, LineHasNoControlCharacterButItsEnd) {
    const AuditEntry entry{kNow, {.action = AuditAction::Open, .client = "\n\x1b\x7f\x90"}};
    const std::string line = AuditLine(entry);
    EXPECT_EQ(line.substr(line.find("\"client\"")),
              "\"client\":\"\\n\\u001b\\u007f\\u0090\",\"name\":null,\"old\":null,\"new\":null}\n");
    EXPECT_EQ(ParseAuditLine(line), entry);
}

TEST_F(AuditRecordTest, LongTextsAreCut) {
    const std::string longest(kLongestAuditText, '\x01');
    const std::string longer = longest + '\x01';
    AuditEntry entry{kNow,
                     {AuditAction::Value, longer, longer, longer, longer, longer, longer, longer}};
    std::string line = AuditLine(entry);
    EXPECT_LE(line.size(), kLongestAuditLine);
    line.pop_back();
    const std::string cut = longest + "...";
    EXPECT_EQ(ParseAuditLine(line),
              (AuditEntry{kNow, {AuditAction::Value, cut, cut, cut, cut, cut, cut, cut}}));
    entry.record = {.action = AuditAction::Value, .newValue = longest};
    line = AuditLine(entry);
    line.pop_back();
    EXPECT_EQ(ParseAuditLine(line), entry);
}

TEST_F(AuditRecordTest, OtherLinesAreNone) {
    for (const char* line :
         {"", "{", "7", "null", "[]", "{}", R"({"seconds":1})", R"({"action":"start"})",
          R"({"seconds":"1","action":"start"})", R"({"seconds":1.5,"action":"start"})",
          R"({"seconds":1,"action":7})", R"({"seconds":1,"action":"fly"})",
          R"({"seconds":1,"action":"start","user":7})", R"({"seconds":1,"action":"start","old":7})",
          R"({"seconds":1,"action":"start"} x)",
          "{\"seconds\":1,\"action\":\"start\",\"user\":\"\xB3\"}"}) {
        EXPECT_EQ(ParseAuditLine(line), std::nullopt) << line;
    }
    EXPECT_EQ(ParseAuditLine(R"({"seconds":1,"action":"start"})"),
              (AuditEntry{1, {.action = AuditAction::Start}}));
}

TEST_F(AuditRecordTest, TimeIsFoundInFrontOfALine) {
    EXPECT_EQ(AuditLineTime(kFullLine), kNow);
    EXPECT_EQ(AuditLineTime(AuditLine({-5, {}})), -5);
    for (const char* line : {"", R"("seconds":)", R"("seconds":7)", R"("seconds":7})",
                             R"("seconds":x,)", R"("seconds":99999999999999999999,)"}) {
        EXPECT_EQ(AuditLineTime(line), std::nullopt) << line;
    }
    EXPECT_EQ(AuditLineTime(std::string(54, ' ') + R"("seconds":7,)"), 7);
    EXPECT_EQ(AuditLineTime(std::string(55, ' ') + R"("seconds":7,)"), std::nullopt);
}

}  // namespace
}  // namespace kalvex::audit
