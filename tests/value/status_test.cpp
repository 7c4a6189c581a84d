#include "value/Status.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace kalvex::value {
namespace {

struct WordRow {
    std::string_view word;
    int bit;
};

constexpr WordRow kWords[] = {
    {"UNKNOWN", 1},          {"TRANSMISSION_ERROR", 2}, {"ALARM", 4},
    {"CONFIRMED_ALARM", 8},  {"SET_BY_DEVICE", 16},     {"SET_BY_USER", 32},
    {"CALCULATE_ERROR", 64}, {"REPORT_LOADED", 128},    {"REPORT_INITED", 256},
    {"LOCK", 512},           {"HARDLOCK", 512},         {"SOFTLOCK", 2048},
    {"ALARM_MEM", 16384},    {"SUPERVISORY", 32768},
};

TEST(StatusTest, EveryWordNamesItsBit) {
    for (const WordRow& row : kWords) EXPECT_EQ(StatusBit(row.word), row.bit) << row.word;
}

TEST(StatusTest, ListHoldsTheseWordsAndNoOthers) {
    std::vector<std::string_view> expected;
    std::vector<std::string_view> listed;
    for (const WordRow& row : kWords) expected.push_back(row.word);
    for (const StatusWord& row : StatusWords()) listed.push_back(row.word);
    EXPECT_EQ(listed, expected);
}

TEST(StatusTest, OtherWordNamesNoBit) {
    for (const std::string_view word : {"", "unknown", "Alarm", "ALARM ", "ALARM_", "DEADLOCK"}) {
        EXPECT_EQ(StatusBit(word), std::nullopt) << word;
    }
}

struct KindRow {
    std::string_view suffix;
    int kind;
};

constexpr KindRow kKinds[] = {
    {"CURDATA", 1}, {"HREP", 2}, {"DREP", 3}, {"MREP", 4}, {"SREP", 5}, {"ARCH", 6},
};

TEST(StatusValueKindTest, EverySuffixHasItsKindAndLabel) {
    constexpr std::string_view kLabels[] = {
        "Typ danych: bieżące",    "Typ danych: godzinowe", "Typ danych: dobowe",
        "Typ danych: miesięczne", "Typ danych: okresowe",  "Typ danych: archiwalne",
    };
    ASSERT_EQ(ValueKinds().size(), 6u);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(ValueKinds()[i].suffix, kKinds[i].suffix);
        EXPECT_EQ(ValueKinds()[i].kind, kKinds[i].kind);
        EXPECT_EQ(ValueKinds()[i].help, kLabels[i]);
    }
}

TEST(StatusValueKindTest, WordIsComparedWithCase) {
    for (const KindRow& row : kKinds) EXPECT_EQ(KindFromWord(row.suffix), row.kind);
    for (const std::string_view word : {"", "hrep", "Hrep", "HREPX", ".HREP", "XYZ"}) {
        EXPECT_EQ(KindFromWord(word), 0) << word;
    }
}

TEST(StatusValueKindTest, SuffixOfANameSelectsTheKindInEitherCase) {
    constexpr KindRow kNames[] = {
        {".A.HREP", 2}, {".A.dRep", 3}, {"..ARCH", 6},    {"A.CURDATA", 1},
        {"A.HREP", 2},  {"A.DREP", 3},  {"A.MREP", 4},    {"A.SREP", 5},
        {"A.ARCH", 6},  {"A.hrep", 2},  {"A.Curdata", 1},
    };
    for (const KindRow& row : kNames) EXPECT_EQ(GetValueKind(row.suffix), row.kind) << row.suffix;
}

TEST(StatusValueKindTest, NameWithoutASuffixIsCurrent) {
    for (const std::string_view name : {"", "A", "HREP", ".HREP", "."}) {
        EXPECT_EQ(GetValueKind(name), 1) << name;
    }
}

TEST(StatusValueKindTest, UnknownSuffixIsNoKind) {
    for (const std::string_view name :
         {"A.", "A.XYZ", "A.B.HREP", "A..HREP", "A.HREP.", "A. HREP", "..", ".A.B.HREP"}) {
        EXPECT_EQ(GetValueKind(name), 0) << name;
    }
}

}  // namespace
}  // namespace kalvex::value
