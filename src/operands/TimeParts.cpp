#include "operands/TimeParts.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <span>
#include <utility>

#include "text/Characters.h"
#include "text/LineScanner.h"

namespace kalvex::operands {

namespace {

constexpr std::string_view kDays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                      "Thursday", "Friday", "Saturday"};
constexpr std::string_view kMonths[] = {"January",   "February", "March",    "April",
                                        "May",       "June",     "July",     "August",
                                        "September", "October",  "November", "December"};
constexpr std::string_view kHalves[] = {"AM", "PM"};

constexpr std::size_t kShort = 3;
constexpr std::size_t kWhole = std::string_view::npos;
constexpr std::size_t kLongestZone = 32;

struct NumberConversion {
    char letter;
    std::size_t digits;
    int TimeParts::*part;
    int least;
    int most;
};

constexpr NumberConversion kNumbers[] = {
    {'C', 2, &TimeParts::century, 0, 99},       {'d', 2, &TimeParts::day, 1, 31},
    {'e', 2, &TimeParts::day, 1, 31},           {'g', 2, &TimeParts::weekYearOfCentury, 0, 99},
    {'G', 4, &TimeParts::weekYear, 0, 9999},    {'H', 2, &TimeParts::hour, 0, 23},
    {'I', 2, &TimeParts::hourOfHalf, 1, 12},    {'j', 3, &TimeParts::dayOfYear, 1, 366},
    {'m', 2, &TimeParts::month, 1, 12},         {'M', 2, &TimeParts::minute, 0, 59},
    {'S', 2, &TimeParts::second, 0, 59},        {'u', 1, &TimeParts::weekday, 1, 7},
    {'U', 2, &TimeParts::sundayWeek, 0, 53},    {'V', 2, &TimeParts::isoWeek, 1, 53},
    {'w', 1, &TimeParts::weekday, 0, 6},        {'W', 2, &TimeParts::mondayWeek, 0, 53},
    {'y', 2, &TimeParts::yearOfCentury, 0, 99}, {'Y', 4, &TimeParts::year, 0, 9999},
};

struct NameConversion {
    char letter;
    std::span<const std::string_view> names;
    std::size_t length;
    int TimeParts::*part;
    int first;
};

constexpr NameConversion kNames[] = {
    {'a', kDays, kShort, &TimeParts::weekday, 0}, {'A', kDays, kWhole, &TimeParts::weekday, 0},
    {'b', kMonths, kShort, &TimeParts::month, 1}, {'B', kMonths, kWhole, &TimeParts::month, 1},
    {'h', kMonths, kShort, &TimeParts::month, 1}, {'p', kHalves, kWhole, &TimeParts::half, 0},
};

// Conversions that stand for a format of their own.
struct FormatConversion {
    char letter;
    std::string_view format;
};

constexpr FormatConversion kFormats[] = {
    {'c', "%a %b %e %H:%M:%S %Y"},
    {'D', "%m/%d/%y"},
    {'F', "%Y-%m-%d"},
    {'n', "\n"},
    {'r', "%I:%M:%S %p"},
    {'R', "%H:%M"},
    {'t', "\t"},
    {'T', "%H:%M:%S"},
    {'x', "%m/%d/%y"},
    {'X', "%H:%M:%S"},
};

template <class Row, std::size_t Count>
const Row* FindRow(const Row (&rows)[Count], char letter) {
    const Row* row = std::ranges::find(rows, letter, &Row::letter);
    return row == std::end(rows) ? nullptr : row;
}

class Reader {
  public:
    explicit Reader(std::string_view text) : m_text(text) {}

    bool Read(std::string_view format) {
        while (!format.empty()) {
            const char c = format.front();
            format.remove_prefix(1);
            if (c != '%') {
                if (!Take(c)) return false;
                continue;
            }
            // A modifier changes nothing here; one that does not belong shows when the fields are
            // written again.
            if (format.starts_with('E') || format.starts_with('O')) format.remove_prefix(1);
            if (format.empty()) return false;
            const char letter = format.front();
            format.remove_prefix(1);
            if (letter == 'Z') return ReadZoneAnd(format);
            if (!ReadConversion(letter)) return false;
        }
        return true;
    }

    bool IsAtEnd() const { return m_text.empty(); }
    TimeParts TakeParts() { return std::move(m_parts); }

  private:
    bool Take(char c) {
        if (!m_text.starts_with(c)) return false;
        m_text.remove_prefix(1);
        return true;
    }

    bool ReadConversion(char letter) {
        if (const NumberConversion* number = FindRow(kNumbers, letter)) return ReadNumber(*number);
        if (const NameConversion* name = FindRow(kNames, letter)) return ReadName(*name);
        if (const FormatConversion* row = FindRow(kFormats, letter)) return Read(row->format);
        if (letter == '%') return Take('%');
        return letter == 'z' && ReadOffset();
    }

    // The digits, of which the first may be a blank.
    bool TakeDigits(std::size_t count, int& out) {
        if (m_text.size() < count) return false;
        out = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const char c = m_text[i] == ' ' && i == 0 ? '0' : m_text[i];
            if (!text::IsDigit(c)) return false;
            out = out * 10 + (c - '0');
        }
        m_text.remove_prefix(count);
        return true;
    }

    bool ReadNumber(const NumberConversion& row) {
        int& part = m_parts.*row.part;
        return TakeDigits(row.digits, part) && part >= row.least && part <= row.most;
    }

    bool ReadName(const NameConversion& row) {
        const auto stands = [&](std::string_view name) {
            return m_text.starts_with(name.substr(0, row.length));
        };
        const auto name = std::ranges::find_if(row.names, stands);
        if (name == row.names.end()) return false;
        m_text.remove_prefix(std::min(name->size(), row.length));
        m_parts.*row.part = static_cast<int>(name - row.names.begin()) + row.first;
        return true;
    }

    bool ReadOffset() {
        const bool west = m_text.starts_with('-');
        int hours = 0;
        int minutes = 0;
        if (!Take(west ? '-' : '+') || !TakeDigits(2, hours) || !TakeDigits(2, minutes))
            return false;
        m_parts.offset = (hours * 60 + minutes) * (west ? -60 : 60);
        return true;
    }

    // Where an abbreviation ends is told by what stands behind it; a second one is the same.
    bool ReadZoneAnd(std::string_view format) {
        if (!m_parts.zone.empty()) {
            if (!m_text.starts_with(m_parts.zone)) return false;
            m_text.remove_prefix(m_parts.zone.size());
            return Read(format);
        }
        const auto belongs = [](char c) {
            return text::IsLetterOrDigit(c) || c == '+' || c == '-';
        };
        const auto end = std::ranges::find_if_not(m_text.substr(0, kLongestZone), belongs);
        for (auto length = static_cast<std::size_t>(end - m_text.begin()); length > 0; --length) {
            Reader rest(m_text.substr(length));
            rest.m_parts = m_parts;
            rest.m_parts.zone = m_text.substr(0, length);
            if (!rest.Read(format) || !rest.IsAtEnd()) continue;
            *this = std::move(rest);
            return true;
        }
        return false;
    }

    std::string_view m_text;
    TimeParts m_parts;
};

bool IsGiven(int part) {
    return part != TimeParts::kNone;
}

// In a century, or of the hundred years from 1969 on.
int YearInCentury(int century, int yearOfCentury) {
    constexpr int kFirstOfLast = 69;
    if (IsGiven(century)) return century * 100 + yearOfCentury;
    return yearOfCentury + (yearOfCentury >= kFirstOfLast ? 1900 : 2000);
}

int YearOf(const TimeParts& parts) {
    if (IsGiven(parts.year)) return parts.year;
    if (IsGiven(parts.century) && IsGiven(parts.yearOfCentury))
        return YearInCentury(parts.century, parts.yearOfCentury);
    if (IsGiven(parts.weekYear)) return parts.weekYear;
    if (IsGiven(parts.yearOfCentury)) return YearInCentury(parts.century, parts.yearOfCentury);
    if (IsGiven(parts.weekYearOfCentury))
        return YearInCentury(parts.century, parts.weekYearOfCentury);
    return IsGiven(parts.century) ? parts.century * 100 : 1900;
}

// The day of a week, in a year or, for a week of ISO 8601, in the year of its weeks.
std::optional<std::chrono::sys_days> DayOfWeek(const TimeParts& parts, std::chrono::year year) {
    using namespace std::chrono;
    if (!IsGiven(parts.weekday)) return std::nullopt;
    const days fromSunday(parts.weekday % 7);
    const days fromMonday((parts.weekday + 6) % 7);
    if (IsGiven(parts.sundayWeek)) {
        return sys_days(year / January / Sunday[1]) + weeks(parts.sundayWeek - 1) + fromSunday;
    }
    if (IsGiven(parts.mondayWeek)) {
        return sys_days(year / January / Monday[1]) + weeks(parts.mondayWeek - 1) + fromMonday;
    }
    if (!IsGiven(parts.isoWeek)) return std::nullopt;
    // January 4 lies in the first week.
    const sys_days fourth = year / January / 4;
    return fourth - (weekday(fourth) - Monday) + weeks(parts.isoWeek - 1) + fromMonday;
}

std::optional<std::chrono::sys_days> DayOf(const TimeParts& parts, std::chrono::year year) {
    using namespace std::chrono;
    const bool month = IsGiven(parts.month);
    if (!IsGiven(parts.day) || !month) {
        if (IsGiven(parts.dayOfYear)) {
            return sys_days(year / January / 1) + days(parts.dayOfYear - 1);
        }
        if (const std::optional<sys_days> day = DayOfWeek(parts, year)) return day;
    }
    if (!IsGiven(parts.day)) return std::nullopt;
    const std::chrono::month first(month ? static_cast<unsigned>(parts.month) : 1);
    return sys_days(year / first / 1) + days(parts.day - 1);
}

int HourOf(const TimeParts& parts) {
    constexpr int kNoon = 12;
    if (IsGiven(parts.hour)) return parts.hour;
    const int ofHalf = IsGiven(parts.hourOfHalf) ? parts.hourOfHalf % kNoon : 0;
    return ofHalf + (parts.half == 1 ? kNoon : 0);
}

}  // namespace

std::optional<TimeParts> ReadTimeParts(std::string_view text, std::string_view format) {
    Reader reader(text);
    if (!reader.Read(format) || !reader.IsAtEnd()) return std::nullopt;
    return reader.TakeParts();
}

std::tm FieldsOfParts(const TimeParts& parts, int yearsBeside) {
    using namespace std::chrono;
    const int year = YearOf(parts) + yearsBeside;
    std::tm fields{};
    fields.tm_year = year - 1900;
    if (const std::optional<sys_days> day = DayOf(parts, std::chrono::year(year))) {
        const year_month_day date(*day);
        fields.tm_year = int(date.year()) - 1900;
        fields.tm_mon = static_cast<int>(unsigned(date.month())) - 1;
        fields.tm_mday = static_cast<int>(unsigned(date.day()));
        fields.tm_wday = static_cast<int>(weekday(*day).c_encoding());
        fields.tm_yday = static_cast<int>((*day - sys_days(date.year() / January / 1)).count());
    }
    // A date is taken as it stands, though there be no such day.
    if (IsGiven(parts.month) && IsGiven(parts.day)) {
        fields.tm_year = year - 1900;
        fields.tm_mon = parts.month - 1;
        fields.tm_mday = parts.day;
        if (IsGiven(parts.dayOfYear)) fields.tm_yday = parts.dayOfYear - 1;
    }
    if (IsGiven(parts.weekday)) fields.tm_wday = parts.weekday % 7;
    fields.tm_hour = HourOf(parts);
    fields.tm_min = std::max(parts.minute, 0);
    fields.tm_sec = std::max(parts.second, 0);
    fields.tm_gmtoff = parts.offset;
    fields.tm_zone = parts.zone.c_str();
    return fields;
}

}  // namespace kalvex::operands
