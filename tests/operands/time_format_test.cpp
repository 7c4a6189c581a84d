#include "operands/TimeFormat.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/zone_scope.h"
#include "value/LocalTime.h"

namespace kalvex::operands {
namespace {

std::tm LocalFields(std::int64_t time) {
    std::tm fields{};
    EXPECT_TRUE(value::LocalCalendar(time, fields));
    return fields;
}

std::string Reading(const std::tm& fields) {
    return FormatTime(fields, kDefaultTimeFormat);
}

// What a text by the format of these fields is read as.
std::string ReadBack(const std::tm& fields, std::string_view format) {
    const std::optional<std::tm> read = ReadTime(FormatTime(fields, format), format);
    return read ? Reading(*read) : "nothing";
}

// Instants all over the years that two digits can tell, the days around each new year, and the
// nights in which Warsaw's clocks change.
std::vector<std::int64_t> Instants() {
    std::vector<std::int64_t> instants;
    constexpr std::int64_t kUneven = 59 * 86400 + 7 * 3600 + 13 * 60 + 11;
    for (std::int64_t time = 0; time < support::Gmt(2068, 12, 1); time += kUneven)
        instants.push_back(time);
    for (int year = 1971; year < 2069; year += 3) {
        for (int day = -4; day <= 4; ++day)
            instants.push_back(support::Gmt(year, 1, 1, 11, 59, 59) + day * 86400);
    }
    for (const std::int64_t change :
         {support::Gmt(2024, 3, 31, 1), support::Gmt(2024, 10, 27, 1)}) {
        for (int i = -60; i <= 60; ++i) instants.push_back(change + i * 121);
    }
    return instants;
}

void ExpectReadBack(const std::string& format) {
    for (const std::int64_t time : Instants()) {
        const std::tm fields = LocalFields(time);
        ASSERT_EQ(ReadBack(fields, format), Reading(fields)) << format << ' ' << time;
    }
}

TEST(TimeFormatTest, EveryConversionIsReadAsItWasWritten) {
    const support::ZoneScope zone("Europe/Warsaw");
    for (const char letter : std::string("aAbBcCdDeFgGhHIjmMnprRStTuUVwWxXyYzZ%")) {
        ExpectReadBack(std::string("%F %T|%") + letter + "|");
    }
    for (const char letter : std::string("cCxXyY"))
        ExpectReadBack(std::string("%F %T|%E") + letter);
    for (const char letter : std::string("deHImMSuUVwWy"))
        ExpectReadBack(std::string("%F %T|%O") + letter);
}

TEST(TimeFormatTest, FormatThatTellsTheTimeIsReadAsItWasWritten) {
    const support::ZoneScope zone("Europe/Warsaw");
    for (const char* format : {"%c",           "%Ec",
                               "%x %X",        "%Ex%EX",
                               "%D%T",         "%D %R:%S",
                               "%y%m%d%H%M%S", "%Ey%Om%Od%OH%OM%OS",
                               "%C%y-%j %T",   "%EC%Oy%j%T",
                               "%G-W%V-%u %T", "%g%V%u%T",
                               "%G%V%A%T",     "%Y %U %w %T",
                               "%Y%U%a%T",     "%Y %W %u %T",
                               "%y%W%A%T",     "%e%B%Y %I:%M:%S%p",
                               "%p%h%d%Y%r",   "%F%T%z%Z",
                               "%Z%A%d%b%Y%T", "%n%F%t%T%%",
                               "%Z%Z%F%T%Z",   "%Y%m%e%H%M%S",
                               "%S%M%H%d%m%Y"}) {
        ExpectReadBack(format);
    }
}

TEST(TimeFormatTest, ZonesWithoutANameAreRead) {
    for (const char* name : {"America/Sao_Paulo", "Asia/Kathmandu", "Pacific/Chatham", "UTC"}) {
        const support::ZoneScope zone(name);
        ExpectReadBack("%Z%H%M%S%F%z");
        ExpectReadBack("%z%y%m%d%T%Z");
    }
}

// Such a text is that of several days.
TEST(TimeFormatTest, TextThatTellsLessIsReadAsOneOfItsTimes) {
    const support::ZoneScope zone("Europe/Warsaw");
    for (const std::string format : {"%G-%m-%d", "%C-%g-%m-%d", "%Y %V %u", "%g%j", "%C %m %d",
                                     "%y-%m-%d %p", "%F %I", "%d %B %G"}) {
        for (const std::int64_t time : Instants()) {
            const std::string text = FormatTime(LocalFields(time), format);
            const std::optional<std::tm> read = ReadTime(text, format);
            ASSERT_TRUE(read) << format << ' ' << text;
            ASSERT_EQ(FormatTime(*read, format), text);
        }
    }
}

TEST(TimeFormatTest, TwoDigitsOfAYearAreOfTheHundredYearsFrom1969) {
    EXPECT_EQ(Reading(*ReadTime("690101", "%y%m%d")), "1969-01-01 00:00:00");
    EXPECT_EQ(Reading(*ReadTime("681231", "%y%m%d")), "2068-12-31 00:00:00");
    EXPECT_EQ(Reading(*ReadTime("1968123", "%C%y%j")), "1968-05-02 00:00:00");
}

TEST(TimeFormatTest, ConversionThatDoesNotExistIsWrittenAsItIsAndNotRead) {
    const support::ZoneScope zone("Europe/Warsaw");
    const std::tm fields = LocalFields(support::Gmt(2024, 1, 5, 6, 7, 8));
    for (const std::string conversion : {"%q", "%", "%E", "%O", "%Eq", "%Oq", "%Ed", "%Oc", "%-d",
                                         "%_d", "%5Y", "%k", "%s", "%P"}) {
        EXPECT_EQ(FormatTime(fields, "%F " + conversion), "2024-01-05 " + conversion);
        EXPECT_EQ(ReadBack(fields, "%F " + conversion), "nothing") << conversion;
    }
}

struct Refused {
    const char* text;
    const char* format;
};

TEST(TimeFormatTest, TextThatIsNotOfItsFormatIsRefused) {
    constexpr Refused kRows[] = {
        {"24015", "%y%m%d"},
        {" 40105", "%y%m%d"},
        {"2401055", "%y%m%d"},
        {"20240105", "%y%m%d"},
        {"2024-01-05", "%D"},
        {"1/5/24", "%x"},
        {"2024-01-05", "%Y-%m-%e"},
        {"2024-01- 5", "%F"},
        {"2024-01-05 am", "%F %p"},
        {"2024-01-05 24", "%F %H"},
        {"2024-01-05 13", "%F %I"},
        {"2024-01-05 00", "%F %I"},
        {"2024 000", "%Y %j"},
        {"2024 367", "%Y %j"},
        {"2023 366", "%Y %j"},
        {"2024 54 1", "%Y %W %u"},
        {"2024-01-05 8", "%F %u"},
        {"2024-01-05 7", "%F %w"},
        {"2024-01-05 ", "%F %Z"},
        {"2024-01-05 +1:00", "%F %z"},
        {"2024-01-05 +010", "%F %z"},
        {"2024-01-05 CETCEST", "%F %Z%Z"},
        {"2024-01-05 07 08", "%F %H %H"},
        {"Fri 5 Jan 2024", "%a %e %b %Y"},
        {"fri 2024-01-05", "%a %F"},
        {"2024-jan-05", "%Y-%b-%d"},
        {"0999-01-05", "%F"},
        {"2024-01", "%Y-%m"},
        {"07:08", "%H:%M"},
        {"2024 W02", "%G W%V"},
        {"2024-01-05 01", "%F %V%"},
        {"2024-01-05 02", "%F %V"},
        {"2024 005 06", "%Y %j %d"},
        {"", "%F"},
        {"2024-01-05", ""},
    };
    for (const Refused& row : kRows) {
        EXPECT_FALSE(ReadTime(row.text, row.format)) << row.text << " by " << row.format;
    }
}

TEST(TimeFormatTest, WhatIsNotGivenIsTheFirst) {
    EXPECT_EQ(Reading(*ReadTime("05 2024", "%d %Y")), "2024-01-05 00:00:00");
    EXPECT_EQ(Reading(*ReadTime("Mon 05 2024 PM", "%a %d %Y %p")), "2024-01-05 12:00:00");
    EXPECT_EQ(Reading(*ReadTime("05.02", "%d.%m")), "1900-02-05 00:00:00");
}

TEST(TimeFormatTest, DayThatTheMonthHasNotIsReadAsItStands) {
    const std::tm fields = *ReadTime("2023-02-31 Mon", "%F %a");
    EXPECT_EQ(fields.tm_mon, 1);
    EXPECT_EQ(fields.tm_mday, 31);
    EXPECT_EQ(fields.tm_zone, nullptr);
}

}  // namespace
}  // namespace kalvex::operands
