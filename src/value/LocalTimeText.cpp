#include "value/LocalTimeText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "value/LocalTime.h"

namespace kalvex::value {

namespace {

constexpr std::string_view kForm = "YYYY-MM-DD HH:MM:SS";

bool HasForm(std::string_view text, std::string_view wanted) {
    return std::ranges::equal(text, wanted, [](unsigned char sign, char form) {
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

std::optional<TimeFields> FieldsOf(std::string_view text) {
    if (!HasForm(text, kForm)) return {};
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
    return fields;
}

// In seconds, of a text such as "+02:00".
std::optional<std::int64_t> OffsetOf(std::string_view text) {
    constexpr int kFarthest = 15;
    if (!HasForm(text, "+HH:MM") && !HasForm(text, "-HH:MM")) return {};
    const int hours = Number(text.substr(1, 2));
    const int minutes = Number(text.substr(4, 2));
    if (hours > kFarthest || minutes > 59) return {};
    const std::int64_t offset = hours * kSecondsPerHour + minutes * kSecondsPerMinute;
    return text.front() == '-' ? -offset : offset;
}

std::int64_t OffsetAt(std::int64_t time) {
    std::tm at{};
    return LocalCalendar(time, at) ? at.tm_gmtoff : 0;
}

// The instants at which clocks show the reading, which is a count as if it were GMT.
std::vector<std::int64_t> InstantsOf(std::int64_t reading) {
    std::vector<std::int64_t> instants;
    const std::int64_t before = OffsetAt(reading - kSecondsPerDay);
    const std::int64_t after = OffsetAt(reading + kSecondsPerDay);
    if (OffsetAt(reading - before) == before) instants.push_back(reading - before);
    if (after != before && OffsetAt(reading - after) == after) instants.push_back(reading - after);
    return instants;
}

std::int64_t ReadingOf(const TimeFields& fields) {
    std::tm at{};
    at.tm_year = fields.year - 1900;
    at.tm_mon = fields.month - 1;
    at.tm_mday = fields.day;
    at.tm_hour = fields.hour;
    at.tm_min = fields.minute;
    at.tm_sec = fields.second;
    return timegm(&at);
}

}  // namespace

std::optional<std::int64_t> ParseLocalTime(std::string_view text) {
    const std::optional<TimeFields> fields = FieldsOf(text);
    return fields ? std::optional(MakeLocalTime(*fields)) : std::nullopt;
}

std::string FormatLocalTime(std::int64_t time) {
    std::tm local{};
    if (!LocalCalendar(time, local)) return std::to_string(time);
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", local.tm_year + 1900,
                       local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
}

std::string FormatExactLocalTime(std::int64_t time) {
    const std::int64_t offset = OffsetAt(time);
    const std::string text = FormatLocalTime(time);
    if (InstantsOf(time + offset).size() < 2) return text;
    const std::int64_t minutes = std::abs(offset) / kSecondsPerMinute;
    return fmt::format("{}{}{:02}:{:02}", text, offset < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

LocalReading ReadExactLocalTime(std::string_view text, std::int64_t& time) {
    const std::optional<TimeFields> fields = FieldsOf(text.substr(0, kForm.size()));
    if (!fields) return LocalReading::Unreadable;
    const std::int64_t reading = ReadingOf(*fields);
    if (text.size() > kForm.size()) {
        const std::optional<std::int64_t> offset = OffsetOf(text.substr(kForm.size()));
        if (!offset) return LocalReading::Unreadable;
        time = reading - *offset;
        return LocalReading::Exact;
    }
    const std::vector<std::int64_t> instants = InstantsOf(reading);
    if (instants.empty()) return LocalReading::LeftOut;
    if (instants.size() > 1) return LocalReading::Twice;
    time = instants.front();
    return LocalReading::Exact;
}

}  // namespace kalvex::value
