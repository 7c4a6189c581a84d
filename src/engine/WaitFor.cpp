#include "engine/WaitFor.h"

#include <algorithm>
#include <utility>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

constexpr std::int64_t kDay = 86400;

void SetDay(CWaitFor& record, const value::TimeFields& date) {
    record.nDay = date.day;
    record.nMonth = date.month;
    record.nYear = date.year;
}

void Insert(std::vector<std::int64_t>& times, std::int64_t time) {
    times.insert(std::ranges::lower_bound(times, time), time);
}

std::int64_t CountOf(const CWaitFor& record) {
    return static_cast<std::int64_t>(record.arrTimes.size());
}

bool IsPast(const CWaitFor& record, const value::TimeFields& today) {
    return record.nDay < today.day && record.nMonth <= today.month && record.nYear <= today.year;
}

std::int64_t SecondOfDay(const value::TimeFields& time) {
    return (std::int64_t{time.hour} * 60 + time.minute) * 60 + time.second;
}

}  // namespace

void AddWaitTimes(CWaitFor& record, const operands::SleepTime& written,
                  const value::TimeFields& today) {
    const auto range = [](bool all, int value, int high) {
        const int fixed = std::clamp(value, 0, high);
        return all ? std::pair{0, high} : std::pair{fixed, fixed};
    };
    const bool everyHour = written.form != operands::SleepForm::HoursMinutesSeconds;
    const bool everyMinute = written.form == operands::SleepForm::Seconds;
    const auto [firstHour, lastHour] = range(everyHour, written.hours, 23);
    const auto [firstMinute, lastMinute] = range(everyMinute, written.minutes, 59);

    value::TimeFields at = today;
    at.second = std::clamp(written.seconds, 0, 59);
    for (at.hour = firstHour; at.hour <= lastHour; ++at.hour) {
        for (at.minute = firstMinute; at.minute <= lastMinute; ++at.minute) {
            Insert(record.arrTimes, value::MakeLocalTime(at));
        }
    }
}

bool ReadWaitFor(operands::ScriptContext& script, std::string_view text, std::int64_t now,
                 CWaitFor& record) {
    const value::TimeFields today = value::SplitLocalTime(now);
    std::string_view token = text::NextToken(text);
    if (token.empty()) return false;
    for (; !token.empty(); token = text::NextToken(text)) {
        if (token == ",") continue;
        operands::SleepTime written;
        if (!operands::ParseSleepTime(script, token, written)) return false;
        AddWaitTimes(record, written, today);
    }
    LocateWaitTime(record, now);
    SetDay(record, today);
    return true;
}

void LocateWaitTime(CWaitFor& record, std::int64_t time) {
    record.nNext = std::ranges::lower_bound(record.arrTimes, time) - record.arrTimes.begin();
}

void RollWaitTimes(CWaitFor& record) {
    if (record.arrTimes.empty()) return;
    const value::TimeFields date =
        value::SplitLocalTime(value::GetNextLocalDayTime(record.arrTimes.front()));
    std::vector<std::int64_t> rolled;
    rolled.reserve(record.arrTimes.size());
    // A day that leaves an hour out moves readings behind later ones: the order is made anew.
    for (const std::int64_t time : record.arrTimes) {
        value::TimeFields at = value::SplitLocalTime(time);
        at.year = date.year;
        at.month = date.month;
        at.day = date.day;
        Insert(rolled, value::MakeLocalTime(at));
    }
    record.arrTimes = std::move(rolled);
    SetDay(record, date);
    record.nNext = 0;
}

bool PassWaitTime(CWaitFor& record, std::int64_t now) {
    const value::TimeFields today = value::SplitLocalTime(now);
    if (IsPast(record, today)) {
        RollWaitTimes(record);
    } else {
        if (record.nNext != CountOf(record)) LocateWaitTime(record, now - 1);
        if (record.nNext == CountOf(record)) RollWaitTimes(record);
    }
    if (record.arrTimes[static_cast<std::size_t>(record.nNext)] >= now) return false;
    ++record.nNext;
    return true;
}

std::int64_t GetStillUntil(const CWaitFor& record, std::int64_t now) {
    const value::TimeFields today = value::SplitLocalTime(now);
    const auto next = record.arrTimes.begin() + record.nNext;
    const bool placed = std::ranges::lower_bound(record.arrTimes, now - 1) == next;
    if (!placed || IsPast(record, today)) return now;
    const std::int64_t midnight = now + kDay - SecondOfDay(today);
    const std::int64_t until = std::min(*next + 1, midnight);
    // Not across a change of the zone's offset, which may bring another day.
    const value::TimeFields last = value::SplitLocalTime(until - 1);
    const bool even =
        last.day == today.day && SecondOfDay(last) - SecondOfDay(today) == until - 1 - now;
    return even ? until : now + 1;
}

CWaitFor* CKalvexDoc::FindWaitFor() {
    const auto found = m_mapWaitFor.find(static_cast<std::uint16_t>(m_nCurrentLine));
    return found == m_mapWaitFor.end() ? nullptr : &found->second;
}

void CKalvexDoc::AddWaitFor(CWaitFor record) {
    record.nLine = m_nCurrentLine;
    m_mapWaitFor.emplace(static_cast<std::uint16_t>(m_nCurrentLine), std::move(record));
}

LineOutcome ExecuteWaitFor(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::int64_t now = document.Services().clock.Now();
    if (CWaitFor* known = document.FindWaitFor()) {
        if (PassWaitTime(*known, now)) return LineOutcome::Finished;
        document.Promise({.from = now, .until = GetStillUntil(*known, now)});
        return LineOutcome::Stays;
    }
    CWaitFor record;
    if (!ReadWaitFor(document, call.rest, now, record)) return LineOutcome::Failed;
    if (record.arrTimes.empty()) return LineOutcome::Stays;
    document.AddWaitFor(std::move(record));
    return LineOutcome::Stays;
}

}  // namespace kalvex::engine
