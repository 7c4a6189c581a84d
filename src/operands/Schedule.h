// Schedule entries: six fields (second, minute, hour, day of month, month, day of week) in the
// manner of crontab, or a word that begins with "@". An entry only ever answers whether an instant
// fits; one that cannot be read fits never, and nobody is told why. Local time, as in LocalTime.h.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace kalvex::operands {

// An entry that has been read. Each set holds the value less the lowest value of its field.
struct ScheduleEntry {
    // The field began with "*". Without either flag a day fits when one of the two day fields holds
    // it; with one, both must.
    static constexpr unsigned AnyDayOfMonth = 1;
    static constexpr unsigned AnyDayOfWeek = 2;

    std::uint64_t seconds = 0;      // 0 to 59
    std::uint64_t minutes = 0;      // 0 to 59
    std::uint64_t hours = 0;        // 0 to 23
    std::uint64_t daysOfMonth = 0;  // 1 to 31
    std::uint64_t months = 0;       // 1 to 12
    std::uint64_t daysOfWeek = 0;   // 0 to 7; an entry that was read holds both or none of 0 and 7
    unsigned flags = 0;
};

struct ScheduleWord {
    std::string_view word;  // with its "@"
    ScheduleEntry entry;
};
std::span<const ScheduleWord> ScheduleWords();

// True for exactly one of the words: "@daily" and its kin.
bool IsScheduleWord(std::string_view text);

// False, with `entry` undefined, for a text that is no entry. Any bytes may stand in it; the work
// is linear in its length.
bool ReadScheduleEntry(std::string_view text, ScheduleEntry& entry);

// Whether the second fits. A negative time fits no entry.
bool FitsSchedule(const ScheduleEntry& entry, std::int64_t time);

// What CHECK_EVENT_TIME asks about.
enum class ScheduleForm {
    Present,
    PresentOn,  // the present and the seconds after it, `a` in all
    Time,       // the time a
    TimeOn,     // the time a and the seconds after it, `b` in all
    Range,      // the present, if it lies in a to b
};

// `a` and `b` are told apart by their size: below 1 absent, below 100000 a tolerance in seconds,
// which looks forward only, else a time.
ScheduleForm GetScheduleForm(std::int32_t a, std::int32_t b);

// The question of CHECK_EVENT_TIME.
bool CheckEventTime(const ScheduleEntry& entry, std::int32_t a, std::int32_t b, std::int64_t now);
bool CheckEventTime(std::string_view text, std::int32_t a, std::int32_t b, std::int64_t now);

}  // namespace kalvex::operands
