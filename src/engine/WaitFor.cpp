#include "engine/WaitFor.h"

#include <algorithm>
#include <utility>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

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
    if (record.nDay < today.day && record.nMonth <= today.month && record.nYear <= today.year) {
        RollWaitTimes(record);
    } else {
        if (record.nNext != CountOf(record)) LocateWaitTime(record, now - 1);
        if (record.nNext == CountOf(record)) RollWaitTimes(record);
    }
    if (record.arrTimes[static_cast<std::size_t>(record.nNext)] >= now) return false;
    ++record.nNext;
    return true;
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
        return PassWaitTime(*known, now) ? LineOutcome::Finished : LineOutcome::Stays;
    }
    CWaitFor record;
    if (!ReadWaitFor(document, call.rest, now, record)) return LineOutcome::Failed;
    if (record.arrTimes.empty()) return LineOutcome::Stays;
    document.AddWaitFor(std::move(record));
    return LineOutcome::Stays;
}

}  // namespace kalvex::engine
