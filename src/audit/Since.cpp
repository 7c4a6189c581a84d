#include "audit/Since.h"

#include <string>

#include "text/WholeNumber.h"
#include "value/LocalTime.h"
#include "value/LocalTimeText.h"

namespace kalvex::audit {

namespace {

struct UnitRow {
    char letter;
    std::int64_t seconds;
};

constexpr UnitRow kUnits[] = {
    {'m', value::kSecondsPerMinute},
    {'h', value::kSecondsPerHour},
    {'d', value::kSecondsPerDay},
};

// What is left out of a full time, by the length of what is there.
struct FormRow {
    std::string_view form;
    std::string_view rest;
};

constexpr FormRow kForms[] = {
    {"YYYY-MM-DD", " 00:00:00"},
    {"YYYY-MM-DD HH:MM", ":00"},
    {"YYYY-MM-DD HH:MM:SS", ""},
};

}  // namespace

std::optional<std::int64_t> ParseSince(std::string_view text, std::int64_t now) {
    for (const FormRow& row : kForms) {
        if (text.size() != row.form.size()) continue;
        const auto time = value::ParseLocalTime(std::string(text).append(row.rest));
        if (time) return time;
    }
    for (const UnitRow& row : kUnits) {
        if (!text.ends_with(row.letter)) continue;
        const auto count = text::ReadWholeNumber<std::int64_t>(text.substr(0, text.size() - 1));
        if (count && *count >= 0 && *count <= value::kLargestTime / row.seconds) {
            return now - *count * row.seconds;
        }
    }
    return {};
}

}  // namespace kalvex::audit
