#include "value/LocalTimeText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "value/LocalTime.h"

namespace kalvex::value {

namespace {

constexpr std::string_view kForm = "YYYY-MM-DD HH:MM:SS";

bool HasForm(std::string_view text) {
    return std::ranges::equal(text, kForm, [](unsigned char sign, char form) {
        return std::isalpha(static_cast<unsigned char>(form)) ? std::isdigit(sign) != 0
                                                              : sign == form;
    });
}

int Number(std::string_view digits) {
    int number = 0;
    for (const char digit : digits) number = number * 10 + (digit - '0');
    return number;
}

int DaysOfMonth(int year, int month) {
    constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return month == 2 && leap ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

}  // namespace

std::optional<std::int64_t> ParseLocalTime(std::string_view text) {
    if (!HasForm(text)) return {};
    const TimeFields fields{.year = Number(text.substr(0, 4)),
                            .month = Number(text.substr(5, 2)),
                            .day = Number(text.substr(8, 2)),
                            .hour = Number(text.substr(11, 2)),
                            .minute = Number(text.substr(14, 2)),
                            .second = Number(text.substr(17, 2))};
    if (fields.month < 1 || fields.month > 12 || fields.day < 1 ||
        fields.day > DaysOfMonth(fields.year, fields.month) || fields.hour > 23 ||
        fields.minute > 59 || fields.second > 59) {
        return {};
    }
    return MakeLocalTime(fields);
}

std::string FormatLocalTime(std::int64_t time) {
    std::tm local{};
    if (!LocalCalendar(time, local)) return std::to_string(time);
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", local.tm_year + 1900,
                       local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
}

}  // namespace kalvex::value
