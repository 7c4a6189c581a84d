#include "workbench/model/TrendCsv.h"

#include <ctime>

#include "text/CodePage.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"
#include "workbench/model/TrendScale.h"

namespace kalvex::workbench {

namespace {

using platform::Translatable;

constexpr std::string_view kMark = "\xef\xbb\xbf";
constexpr std::string_view kLineEnd = "\r\n";
constexpr char kSeparator = ';';

constexpr const char* kTime = Translatable("Czas");
constexpr const char* kIndex = Translatable("Element");
constexpr const char* kStatus = Translatable("Status");

// A name may hold what parts fields.
std::string Quoted(std::string_view text) {
    if (text.find_first_of("\";\r\n") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

std::string OffsetTime(std::int64_t time) {
    std::tm at;
    if (!value::LocalCalendar(time, at)) return {};
    char buffer[64];
    std::string text(buffer, std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%S%z", &at));
    return text.insert(text.size() - 2, ":");
}

}  // namespace

std::string TrendCsv(std::span<const TrendPoint> points, bool isTime, std::string_view name,
                     std::string_view unit, const platform::Translator& translator) {
    std::string heading = translator.Translate(isTime ? kTime : kIndex) + kSeparator;
    heading += Quoted(unit.empty() ? std::string(name)
                                   : std::string(name) + " [" + std::string(unit) + "]");
    heading += kSeparator + translator.Translate(kStatus);
    std::string csv(kMark);
    csv += text::ToUtf8(heading);
    csv += kLineEnd;
    for (const TrendPoint& point : points) {
        csv += isTime ? OffsetTime(point.x) : std::to_string(point.x + 1);
        csv += kSeparator;
        if (point.good) csv += value::FormatDouble(point.value);
        csv += kSeparator;
        csv += StatusText(point.status);
        csv += kLineEnd;
    }
    return csv;
}

}  // namespace kalvex::workbench
