#include "workbench/model/ScheduleWords.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <set>

#include "operands/Schedule.h"
#include "text/TextFormat.h"
#include "value/LocalTime.h"
#include "value/LocalTimeText.h"
#include "workbench/model/ScheduleSearch.h"

namespace kalvex::workbench {

namespace {

using platform::Translatable;

constexpr const char* kDays[] = {
    Translatable("niedziela"), Translatable("poniedziałek"), Translatable("wtorek"),
    Translatable("środa"),     Translatable("czwartek"),     Translatable("piątek"),
    Translatable("sobota"),
};

constexpr const char* kChange = Translatable("zmiana czasu tej doby: zegar przechodzi z %s na %s");
constexpr const char* kNoTimeThatDay = Translatable("tej doby nie ma żadnego terminu");

constexpr const char* kFieldNames[] = {
    Translatable("sekunda"),        Translatable("minuta"),  Translatable("godzina"),
    Translatable("dzień miesiąca"), Translatable("miesiąc"), Translatable("dzień tygodnia"),
};

constexpr const char* kUnknownWord =
    Translatable("takiego słowa z @ nie ma (wielkość liter ma znaczenie)");
constexpr const char* kFieldCount = Translatable(
    "ma pól: %s, a musi mieć 6 (sekunda, minuta, godzina, dzień miesiąca, miesiąc, dzień "
    "tygodnia)");
constexpr const char* kBadField =
    Translatable("pole \"%s\" (%s) jest niezrozumiałe albo wychodzi poza zakres");
constexpr const char* kBadEntry = Translatable("jest niezrozumiały");

constexpr std::int64_t kTwoYears = 731 * value::kSecondsPerDay;

std::string TimeOfDay(const value::TimeFields& at) {
    std::string text;
    for (const int field : {at.hour, at.minute}) {
        if (!text.empty()) text += ':';
        if (field < 10) text += '0';
        text += std::to_string(field);
    }
    return text;
}

std::string ChangeText(std::int64_t change, const platform::Translator& translator) {
    std::tm before;
    value::LocalCalendar(change - 1, before);
    return text::FormatText(translator.Translate(kChange),
                            {TimeOfDay(value::SplitGMTTime(change + before.tm_gmtoff)),
                             TimeOfDay(value::SplitLocalTime(change))});
}

ScheduleFiring Describe(std::int64_t time, const platform::Translator& translator) {
    ScheduleFiring firing;
    firing.time = time;
    firing.date = value::FormatLocalTime(time);
    std::tm at;
    if (value::LocalCalendar(time, at)) {
        firing.zone = at.tm_zone;
        firing.day = translator.Translate(kDays[at.tm_wday]);
    }
    return firing;
}

// The first change of the clocks in the local day of the time.
std::optional<std::int64_t> ChangeOfDay(std::int64_t time) {
    return FindClockChange(value::GetFirstLocalDayTime(time) - 1, value::GetLastLocalDayTime(time));
}

std::vector<std::string> FieldsOf(std::string_view entry) {
    std::vector<std::string> fields;
    constexpr std::string_view kBlanks = " \t";
    for (;;) {
        entry.remove_prefix(std::min(entry.find_first_not_of(kBlanks), entry.size()));
        if (entry.empty()) return fields;
        const std::size_t end = std::min(entry.find_first_of(kBlanks), entry.size());
        fields.emplace_back(entry.substr(0, end));
        entry.remove_prefix(end);
    }
}

// As the only field of an entry that is no "*".
bool CanBeRead(const std::string& field, std::size_t place) {
    std::string entry;
    for (std::size_t i = 0; i < std::size(kFieldNames); ++i) {
        if (i != 0) entry += ' ';
        entry += i == place ? field : "*";
    }
    operands::ScheduleEntry read;
    return operands::ReadScheduleEntry(entry, read);
}

}  // namespace

std::vector<ScheduleFiring> DescribeFirings(std::span<const std::int64_t> times, std::int64_t start,
                                            const platform::Translator& translator) {
    std::vector<ScheduleFiring> firings;
    std::set<std::int64_t> daysWithTimes;  // by their first second
    for (const std::int64_t time : times) {
        ScheduleFiring firing = Describe(time, translator);
        daysWithTimes.insert(value::GetFirstLocalDayTime(time));
        if (const auto change = ChangeOfDay(time)) {
            firing.clocksChange = true;
            firing.note = ChangeText(*change, translator);
        }
        firings.push_back(std::move(firing));
    }
    if (times.empty() || times.back() - start > kTwoYears) return firings;
    for (auto change = FindClockChange(start, times.back()); change;
         change = FindClockChange(*change, times.back())) {
        if (daysWithTimes.count(value::GetFirstLocalDayTime(*change)) != 0) continue;
        ScheduleFiring row = Describe(*change, translator);
        row.fires = false;
        row.clocksChange = true;
        row.note = ChangeText(*change, translator) + "; " + translator.Translate(kNoTimeThatDay);
        firings.insert(std::ranges::upper_bound(firings, *change, {}, &ScheduleFiring::time), row);
    }
    return firings;
}

std::string WhyUnreadable(std::string_view entry, const platform::Translator& translator) {
    if (entry.starts_with('@')) return translator.Translate(kUnknownWord);
    const std::vector<std::string> fields = FieldsOf(entry);
    if (fields.size() != std::size(kFieldNames)) {
        return text::FormatText(translator.Translate(kFieldCount), {std::to_string(fields.size())});
    }
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (CanBeRead(fields[i], i)) continue;
        return text::FormatText(translator.Translate(kBadField),
                                {fields[i], translator.Translate(kFieldNames[i])});
    }
    return translator.Translate(kBadEntry);
}

}  // namespace kalvex::workbench
