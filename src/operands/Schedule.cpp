#include "operands/Schedule.h"

#include <algorithm>
#include <span>

#include "text/Characters.h"
#include "text/CodePage.h"
#include "value/LocalTime.h"

namespace kalvex::operands {

namespace {

constexpr std::uint64_t All(int low, int high) {
    return (std::uint64_t{2} << (high - low)) - 1;
}

constexpr std::uint64_t kFirst = 1;
constexpr std::uint64_t kAllMinutes = All(0, 59);
constexpr std::uint64_t kAllHours = All(0, 23);
constexpr std::uint64_t kAllDays = All(1, 31);
constexpr std::uint64_t kAllMonths = All(1, 12);
constexpr std::uint64_t kAllWeek = All(0, 7);
constexpr std::uint64_t kSunday = 1 << 0 | 1 << 7;
constexpr unsigned kAnyDay = ScheduleEntry::AnyDayOfMonth | ScheduleEntry::AnyDayOfWeek;

constexpr ScheduleWord kWords[] = {
    {"@yearly", {kFirst, kFirst, kFirst, kFirst, kFirst, kAllWeek, kAnyDay}},
    {"@annually", {kFirst, kFirst, kFirst, kFirst, kFirst, kAllWeek, kAnyDay}},
    {"@monthly", {kFirst, kFirst, kFirst, kFirst, kAllMonths, kAllWeek, kAnyDay}},
    {"@weekly",
     {kFirst, kFirst, kFirst, kAllDays, kAllMonths, kSunday, ScheduleEntry::AnyDayOfMonth}},
    {"@daily", {kFirst, kFirst, kFirst, kAllDays, kAllMonths, kAllWeek, kAnyDay}},
    {"@midnight", {kFirst, kFirst, kFirst, kAllDays, kAllMonths, kAllWeek, kAnyDay}},
    {"@hourly", {kFirst, kFirst, kAllHours, kAllDays, kAllMonths, kAllWeek, kAnyDay}},
    {"@every_minute", {kFirst, kAllMinutes, kAllHours, kAllDays, kAllMonths, kAllWeek, kAnyDay}},
};

constexpr std::string_view kMonthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::string_view kDayNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

struct ScheduleField {
    std::uint64_t ScheduleEntry::*bits;
    int low;
    int high;
    std::span<const std::string_view> names;
    unsigned anyFlag;
};

constexpr ScheduleField kFields[] = {
    {&ScheduleEntry::seconds, 0, 59, {}, 0},
    {&ScheduleEntry::minutes, 0, 59, {}, 0},
    {&ScheduleEntry::hours, 0, 23, {}, 0},
    {&ScheduleEntry::daysOfMonth, 1, 31, {}, ScheduleEntry::AnyDayOfMonth},
    {&ScheduleEntry::months, 1, 12, kMonthNames, 0},
    {&ScheduleEntry::daysOfWeek, 0, 7, kDayNames, ScheduleEntry::AnyDayOfWeek},
};

bool IsWordOfField(unsigned char c) {
    return text::IsDigit(static_cast<char>(c)) || text::ToUpper(c) != text::ToLower(c);
}

bool SetBit(std::uint64_t& bits, int low, int high, int value) {
    if (value < low || value > high) return false;
    bits |= std::uint64_t{1} << (value - low);
    return true;
}

// Reads an entry a character at a time. The operations that give a bool give false for an entry
// that cannot be read.
class ScheduleReader {
  public:
    explicit ScheduleReader(std::string_view text) : m_text(text) {}

    bool Read(ScheduleEntry& entry);

  private:
    static constexpr int kEnd = -1;

    int Current() const {
        return m_text.empty() ? kEnd : static_cast<unsigned char>(m_text.front());
    }
    bool IsAt(char c) const { return Current() == c; }
    void Take() { m_text.remove_prefix(1); }

    bool ReadField(std::uint64_t& bits, const ScheduleField& field);
    bool ReadElement(std::uint64_t& bits, const ScheduleField& field);
    bool ReadNumber(int& value, int low, std::span<const std::string_view> names);

    std::string_view m_text;
};

bool ScheduleReader::Read(ScheduleEntry& entry) {
    for (const ScheduleField& field : kFields) {
        if (Current() == kEnd) return false;
        if (IsAt('*')) entry.flags |= field.anyFlag;
        if (!ReadField(entry.*field.bits, field)) return false;
    }
    return Current() == kEnd;
}

bool ScheduleReader::ReadField(std::uint64_t& bits, const ScheduleField& field) {
    if (!ReadElement(bits, field)) return false;
    while (IsAt(',')) {
        Take();
        if (!ReadElement(bits, field)) return false;
    }
    m_text.remove_prefix(std::min(m_text.find_first_of(" \t\n"), m_text.size()));
    m_text.remove_prefix(std::min(m_text.find_first_not_of(" \t"), m_text.size()));
    return true;
}

bool ScheduleReader::ReadElement(std::uint64_t& bits, const ScheduleField& field) {
    int first = field.low;
    int last = field.high;
    int step = 1;
    if (IsAt('*')) {
        Take();
    } else {
        if (!ReadNumber(first, field.low, field.names)) return false;
        if (!IsAt('-')) return SetBit(bits, field.low, field.high, first);
        Take();
        if (!ReadNumber(last, field.low, field.names)) return false;
    }
    if (IsAt('/')) {
        Take();
        if (!ReadNumber(step, 0, {}) || step == 0) return false;
    }
    for (int value = first; value <= last; value += step) {
        if (!SetBit(bits, field.low, field.high, value)) return false;
    }
    return true;
}

bool ScheduleReader::ReadNumber(int& value, int low, std::span<const std::string_view> names) {
    constexpr std::size_t kTooLong = 100;
    constexpr int kLargest = 1'000'000;  // far above every field, far below overflow
    const auto end = std::ranges::find_if_not(m_text, IsWordOfField);
    const std::string_view word(m_text.begin(), end);
    if (word.size() >= kTooLong) return false;
    m_text.remove_prefix(word.size());
    for (std::size_t index = 0; index < names.size(); ++index) {
        if (text::EqualNoCase(names[index], word)) {
            value = static_cast<int>(index) + low;
            return true;
        }
    }
    value = 0;
    for (const char c : word) {
        if (!text::IsDigit(c)) return false;
        value = std::min(value * 10 + (c - '0'), kLargest);
    }
    return true;
}

bool Holds(std::uint64_t bits, int index) {
    return (bits >> index & 1) != 0;
}

// Everything but the second.
bool FitsMinute(const ScheduleEntry& entry, const std::tm& at) {
    if (!Holds(entry.minutes, at.tm_min) || !Holds(entry.hours, at.tm_hour) ||
        !Holds(entry.months, at.tm_mon)) {
        return false;
    }
    const bool dayOfMonth = Holds(entry.daysOfMonth, at.tm_mday - 1);
    const bool dayOfWeek = Holds(entry.daysOfWeek, at.tm_wday);
    return entry.flags != 0 ? dayOfMonth && dayOfWeek : dayOfMonth || dayOfWeek;
}

// Whether one of `count` seconds fits, the first one being `time`.
bool FitsWithin(const ScheduleEntry& entry, std::int64_t time, std::int64_t count) {
    while (count > 0) {
        std::tm at;
        std::tm last;
        if (!value::LocalCalendar(time, at)) return false;
        // To the end of the minute only the second moves on, unless the clocks change before it.
        std::int64_t run = std::min<std::int64_t>(count, std::max(60 - at.tm_sec, 1));
        if (!value::LocalCalendar(time + run - 1, last) || last.tm_gmtoff != at.tm_gmtoff) run = 1;
        if (time < 0) {
            run = std::min(count, -time);
        } else if ((entry.seconds >> at.tm_sec & All(1, static_cast<int>(run))) != 0 &&
                   FitsMinute(entry, at)) {
            return true;
        }
        time += run;
        count -= run;
    }
    return false;
}

const ScheduleWord* FindWord(std::string_view text) {
    const auto row = std::ranges::find(kWords, text, &ScheduleWord::word);
    return row == std::end(kWords) ? nullptr : row;
}

}  // namespace

std::span<const ScheduleWord> ScheduleWords() {
    return kWords;
}

bool IsScheduleWord(std::string_view text) {
    return FindWord(text) != nullptr;
}

bool ReadScheduleEntry(std::string_view text, ScheduleEntry& entry) {
    if (text.starts_with('@')) {
        const ScheduleWord* row = FindWord(text);
        if (row == nullptr) return false;
        entry = row->entry;
        return true;
    }
    entry = {};
    if (!ScheduleReader(text).Read(entry)) return false;
    if ((entry.daysOfWeek & kSunday) != 0) entry.daysOfWeek |= kSunday;
    return true;
}

bool FitsSchedule(const ScheduleEntry& entry, std::int64_t time) {
    std::tm at;
    return time >= 0 && value::LocalCalendar(time, at) && Holds(entry.seconds, at.tm_sec) &&
           FitsMinute(entry, at);
}

ScheduleForm GetScheduleForm(std::int32_t a, std::int32_t b) {
    constexpr std::int32_t kFirstTime = 100000;
    if (a <= 0) return ScheduleForm::Present;
    if (a < kFirstTime) return ScheduleForm::PresentOn;
    if (b <= 0) return ScheduleForm::Time;
    return b < kFirstTime ? ScheduleForm::TimeOn : ScheduleForm::Range;
}

bool CheckEventTime(std::string_view text, std::int32_t a, std::int32_t b, std::int64_t now) {
    ScheduleEntry entry;
    return ReadScheduleEntry(text, entry) && CheckEventTime(entry, a, b, now);
}

bool CheckEventTime(const ScheduleEntry& entry, std::int32_t a, std::int32_t b, std::int64_t now) {
    switch (GetScheduleForm(a, b)) {
        case ScheduleForm::Present:
            return FitsSchedule(entry, now);
        case ScheduleForm::PresentOn:
            return FitsWithin(entry, now, a);
        case ScheduleForm::Time:
            return FitsSchedule(entry, a);
        case ScheduleForm::TimeOn:
            return FitsWithin(entry, a, b);
        case ScheduleForm::Range:
            break;
    }
    return a <= now && now <= b && FitsSchedule(entry, now);
}

}  // namespace kalvex::operands
