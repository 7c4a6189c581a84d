// What a text says of a time, read by a format of scripts. Each conversion takes what FormatTime
// writes for it, no more and no less.
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::operands {

struct TimeParts {
    static constexpr int kNone = -1;

    int century = kNone;
    int yearOfCentury = kNone;
    int year = kNone;
    int weekYear = kNone;  // the year to which the week of ISO 8601 belongs
    int weekYearOfCentury = kNone;
    int month = kNone;      // 1 to 12
    int day = kNone;        // of the month
    int dayOfYear = kNone;  // 1 to 366
    int weekday = kNone;    // 0 or 7 Sunday, 1 Monday
    int sundayWeek = kNone;
    int mondayWeek = kNone;
    int isoWeek = kNone;
    int hour = kNone;
    int hourOfHalf = kNone;  // 1 to 12
    int half = kNone;        // 0 before noon, 1 after it
    int minute = kNone;
    int second = kNone;
    int offset = 0;    // seconds east of GMT
    std::string zone;  // its abbreviation
};

// Nothing when the text is not of the format, or the format has a conversion that does not exist.
std::optional<TimeParts> ReadTimeParts(std::string_view text, std::string_view format);

// The fields that the parts give, in the year that they name or so many years beside it: a week may
// belong to another year than its days. What the parts do not give is 0, the year 1900. The zone is
// that of `parts`, which has to outlive it.
std::tm FieldsOfParts(const TimeParts& parts, int yearsBeside);

}  // namespace kalvex::operands
