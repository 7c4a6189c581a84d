#include "workbench/model/TrendScale.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <optional>

#include "text/TextFormat.h"
#include "value/LocalTime.h"
#include "value/LocalTimeText.h"
#include "value/Status.h"
#include "value/ValueText.h"

namespace kalvex::workbench {

namespace {

using platform::Translatable;
using value::kSecondsPerDay;
using value::kSecondsPerHour;
using value::kSecondsPerMinute;

constexpr const char* kElement = Translatable("element %s");
constexpr const char* kNoValueHere = Translatable("bez wartości");

constexpr double kLeastWidth = 2;        // seconds or elements
constexpr double kGreatestWidth = 1e11;  // three thousand years

// ---- values

std::string FixedText(double value, int decimals) {
    const std::string text = value::FormatDouble(value);
    if (text.find('e') != std::string::npos) return text;
    const std::size_t point = text.find('.');
    std::string cut = text.substr(0, point);
    if (decimals > 0) {
        std::string fraction = text.substr(point + 1);
        fraction.resize(static_cast<std::size_t>(decimals), '0');
        cut += '.' + fraction;
    }
    return cut == "-0" ? "0" : cut;
}

double NiceStep(double width, int most) {
    const double raw = width / std::max(most, 1);
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= raw * (1 - 1e-9)) return factor * power;
    }
    return 10 * power;
}

// ---- times

enum class Unit { Seconds, Hours, Days, Months };

struct TimeStepRow {
    Unit unit;
    int count;
    std::int64_t seconds;  // about so long
    const char* format;
};

constexpr std::int64_t kMonth = 30 * kSecondsPerDay;

constexpr TimeStepRow kTimeSteps[] = {
    {Unit::Seconds, 1, 1, "%H:%M:%S"},
    {Unit::Seconds, 2, 2, "%H:%M:%S"},
    {Unit::Seconds, 5, 5, "%H:%M:%S"},
    {Unit::Seconds, 10, 10, "%H:%M:%S"},
    {Unit::Seconds, 15, 15, "%H:%M:%S"},
    {Unit::Seconds, 30, 30, "%H:%M:%S"},
    {Unit::Seconds, 60, kSecondsPerMinute, "%H:%M"},
    {Unit::Seconds, 120, 2 * kSecondsPerMinute, "%H:%M"},
    {Unit::Seconds, 300, 5 * kSecondsPerMinute, "%H:%M"},
    {Unit::Seconds, 600, 10 * kSecondsPerMinute, "%H:%M"},
    {Unit::Seconds, 900, 15 * kSecondsPerMinute, "%H:%M"},
    {Unit::Seconds, 1800, 30 * kSecondsPerMinute, "%H:%M"},
    {Unit::Seconds, 3600, kSecondsPerHour, "%H:%M"},
    {Unit::Hours, 2, 2 * kSecondsPerHour, "%H:%M"},
    {Unit::Hours, 3, 3 * kSecondsPerHour, "%H:%M"},
    {Unit::Hours, 6, 6 * kSecondsPerHour, "%H:%M"},
    {Unit::Hours, 12, 12 * kSecondsPerHour, "%H:%M"},
    {Unit::Days, 1, kSecondsPerDay, "%Y-%m-%d"},
    {Unit::Days, 2, 2 * kSecondsPerDay, "%Y-%m-%d"},
    {Unit::Days, 7, 7 * kSecondsPerDay, "%Y-%m-%d"},
    {Unit::Months, 1, kMonth, "%Y-%m"},
    {Unit::Months, 3, 3 * kMonth, "%Y-%m"},
    {Unit::Months, 6, 6 * kMonth, "%Y-%m"},
    {Unit::Months, 12, 365 * kSecondsPerDay, "%Y"},
    {Unit::Months, 24, 730 * kSecondsPerDay, "%Y"},
    {Unit::Months, 60, 1826 * kSecondsPerDay, "%Y"},
    {Unit::Months, 120, 3652 * kSecondsPerDay, "%Y"},
    {Unit::Months, 1200, 36525 * kSecondsPerDay, "%Y"},
};

const TimeStepRow& StepFor(std::int64_t width, int most) {
    for (const TimeStepRow& row : kTimeSteps) {
        if (width <= row.seconds * std::max(most, 1)) return row;
    }
    return kTimeSteps[std::size(kTimeSteps) - 1];
}

std::tm CalendarOf(std::int64_t time) {
    std::tm at{};
    value::LocalCalendar(time, at);
    return at;
}

// The first step at or before the time.
std::int64_t StepBefore(std::int64_t time, const TimeStepRow& row) {
    const std::tm at = CalendarOf(time);
    value::TimeFields fields{.year = at.tm_year + 1900, .month = 1, .day = 1};
    switch (row.unit) {
        case Unit::Seconds: {
            const std::int64_t local = time + at.tm_gmtoff;
            return time - (local % row.count + row.count) % row.count;
        }
        case Unit::Hours:
            fields.month = at.tm_mon + 1;
            fields.day = at.tm_mday;
            fields.hour = at.tm_hour - at.tm_hour % row.count;
            break;
        case Unit::Days:
            fields.month = at.tm_mon + 1;
            fields.day = at.tm_mday - (row.count == 7 ? (at.tm_wday + 6) % 7 : 0);
            break;
        case Unit::Months: {
            const int months = fields.year * 12 + at.tm_mon;
            fields.year = (months - months % row.count) / 12;
            fields.month = (months - months % row.count) % 12 + 1;
            break;
        }
    }
    return value::MakeLocalTime(fields);
}

std::int64_t StepAfter(std::int64_t time, const TimeStepRow& row) {
    if (row.unit == Unit::Seconds) {
        std::int64_t next = StepBefore(time + row.count, row);
        // A clock that changes by part of a step puts the next one further off.
        const bool isStep = (next + CalendarOf(next).tm_gmtoff) % row.count == 0;
        if (next <= time || !isStep) next += row.count;
        return next;
    }
    const std::tm at = CalendarOf(time);
    value::TimeFields fields{.year = at.tm_year + 1900,
                             .month = at.tm_mon + 1,
                             .day = at.tm_mday,
                             .hour = row.unit == Unit::Hours ? at.tm_hour : 0};
    if (row.unit == Unit::Hours) fields.hour += row.count - at.tm_hour % row.count;
    if (row.unit == Unit::Days) fields.day += row.count;
    if (row.unit == Unit::Months) fields.month += row.count;
    const std::int64_t next = value::MakeLocalTime(fields);
    return next > time ? next : time + row.seconds;
}

std::string Formatted(const std::tm& at, const char* format) {
    char buffer[64];
    return {buffer, std::strftime(buffer, sizeof buffer, format, &at)};
}

}  // namespace

std::vector<TrendStep> ValueSteps(double low, double high, int most) {
    std::vector<TrendStep> steps;
    if (!(high > low) || !std::isfinite(high - low)) return steps;
    const double step = NiceStep(high - low, most);
    const int decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9)));
    const auto first = static_cast<std::int64_t>(std::ceil(low / step - 1e-9));
    for (int i = 0; i <= most; ++i) {
        const double place = static_cast<double>(first + i) * step;
        if (place > high + step * 1e-9) break;
        const double power = std::pow(10.0, decimals);
        steps.push_back({place, FixedText(std::round(place * power) / power, decimals)});
    }
    return steps;
}

std::vector<TrendStep> TimeSteps(std::int64_t from, std::int64_t to, int most) {
    std::vector<TrendStep> steps;
    if (to <= from) return steps;
    const TimeStepRow& row = StepFor(to - from, most);
    const bool changes = CalendarOf(from).tm_gmtoff != CalendarOf(to).tm_gmtoff;
    const bool withinDay = row.unit == Unit::Seconds || row.unit == Unit::Hours;
    std::optional<std::string> shownDay;
    std::int64_t time = StepBefore(from, row);
    if (time < from) time = StepAfter(time, row);
    for (; time <= to && steps.size() <= static_cast<std::size_t>(2 * most);
         time = StepAfter(time, row)) {
        const std::tm at = CalendarOf(time);
        // The reading that is a step may be left out.
        if (row.unit == Unit::Hours && at.tm_hour % row.count != 0) continue;
        std::string label = Formatted(at, row.format);
        if (withinDay) {
            if (changes) label += ' ' + std::string(at.tm_zone);
            const std::string day = Formatted(at, "%Y-%m-%d");
            if (day != shownDay) label += '\n' + day;
            shownDay = day;
        }
        steps.push_back({static_cast<double>(time), std::move(label)});
    }
    return steps;
}

TrendRange WithMargin(TrendRange range) {
    constexpr double kMargin = 0.05;
    double margin = (range.high - range.low) * kMargin;
    if (!(margin > 0)) margin = std::max(std::abs(range.low) * kMargin, 0.5);
    return {range.low - margin, range.high + margin};
}

std::string StatusText(std::uint16_t status) {
    std::string text;
    std::uint16_t told = 0;
    for (const value::StatusWord& row : value::StatusWords()) {
        if ((status & row.bit) == 0 || (told & row.bit) != 0) continue;
        told |= row.bit;
        if (!text.empty()) text += ' ';
        text += row.word;
    }
    return text;
}

std::string TrendValueText(const TrendPoint& point, std::string_view unit,
                           const platform::Translator& translator) {
    std::string text =
        point.good ? value::FormatDouble(point.value) : translator.Translate(kNoValueHere);
    if (point.good && !unit.empty()) text += ' ' + std::string(unit);
    const std::string status = StatusText(point.status);
    return status.empty() ? text : text + " (" + status + ")";
}

std::string TrendPlaceText(const TrendPoint& point, bool isTime,
                           const platform::Translator& translator) {
    if (!isTime)
        return text::FormatText(translator.Translate(kElement), {std::to_string(point.x + 1)});
    const char* const zone = CalendarOf(point.x).tm_zone;
    return value::FormatLocalTime(point.x) + ' ' + (zone == nullptr ? "" : zone);
}

// ---- what is seen

void TrendView::Show(TrendRange range) {
    const double middle = (range.low + range.high) / 2;
    const double width = std::clamp(range.high - range.low, kLeastWidth, kGreatestWidth);
    m_seen = {middle - width / 2, middle + width / 2};
}

void TrendView::Zoom(double factor, double around) {
    const double width = std::clamp(Width() * factor, kLeastWidth, kGreatestWidth);
    const double share = (around - m_seen.low) / Width();
    m_seen.low = around - share * width;
    m_seen.high = m_seen.low + width;
}

TrendRange TrendView::Shifted(double widths) const {
    const double by = widths * Width();
    return {m_seen.low + by, m_seen.high + by};
}

}  // namespace kalvex::workbench
