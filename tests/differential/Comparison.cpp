#include "differential/Comparison.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <type_traits>

#include "support/value_dump.h"
#include "text/CodePage.h"

namespace kalvex::differential {

namespace {

constexpr std::size_t kNewestCalls = 4;
constexpr value::ValueKind kKinds[] = {value::KindCurrent, value::KindHour, value::KindDay,
                                       value::KindMonth,   value::KindSpan, value::KindArchive};

std::string Show(const std::string& text) {
    return '"' + text::ToUtf8(text) + '"';
}

std::string Show(const value::CVal& value) {
    return text::ToUtf8(support::DescribeWhole(value));
}

template <class Number>
requires std::is_arithmetic_v<Number> std::string Show(Number number) {
    return std::to_string(number);
}

std::string Show(engine::StopCause cause) {
    return std::to_string(static_cast<int>(cause));
}

std::string Show(const std::optional<engine::LineOutcome>& outcome) {
    return outcome ? std::to_string(static_cast<int>(*outcome)) : "none";
}

std::string Show(const std::set<int>& lines) {
    std::string text = "{";
    for (const int line : lines) text += std::to_string(line) + ' ';
    return text + '}';
}

std::string Show(const std::vector<std::int64_t>& times) {
    std::string text = "[";
    for (const std::int64_t time : times) text += std::to_string(time) + ' ';
    return text + ']';
}

std::string Show(const std::pair<int, std::string>& line) {
    return std::to_string(line.first) + ' ' + Show(line.second);
}

template <class Value>
bool Equal(const Value& kept, const Value& read) {
    return kept == read;
}

// Not the comparison of scripts: two NaN are the same here, and 1 and 1.0 are not.
bool Equal(const value::CVal& kept, const value::CVal& read) {
    if (kept.GetType() != read.GetType() || kept.GetStatus() != read.GetStatus() ||
        kept.GetTime() != read.GetTime()) {
        return false;
    }
    if (kept.IsText()) return kept.Text() == read.Text();
    if (kept.GetType() == value::ValueType::Double) {
        if (std::isnan(kept.Real()) && std::isnan(read.Real())) return true;
        return std::bit_cast<std::uint64_t>(kept.Real()) ==
               std::bit_cast<std::uint64_t>(read.Real());
    }
    return !value::ValueType::IsInteger(kept.GetType()) || kept.Integer() == read.Integer();
}

std::string NameOf(const operands::CVariable* variable) {
    return variable == nullptr ? "nothing" : variable->GetName();
}

std::string Show(const vantrel::JournalEntry& entry) {
    std::string text = entry.operation;
    if (entry.variable) text += ' ' + *entry.variable;
    for (const auto& time : {entry.from, entry.to, entry.time}) {
        if (time) text += ' ' + std::to_string(*time);
    }
    if (entry.value) text += ' ' + support::DescribeWhole(*entry.value);
    for (const value::CVal& value : entry.values.value_or(std::vector<value::CVal>())) {
        text += ' ' + support::DescribeWhole(value);
    }
    return text;
}

}  // namespace

template <class Value>
bool Comparison::Same(const char* what, const Value& kept, const Value& read) {
    if (Equal(kept, read)) return true;
    m_difference = text::ToUtf8(m_context) + what + ": " + Show(kept) + " with kept forms, " +
                   Show(read) + " read anew";
    return false;
}

std::string Comparison::FindDifference(bool whole) {
    m_difference.clear();
    m_context.clear();
    bool same = CompareWorlds() && CompareRequests();
    for (std::size_t i = 0; same && i < m_kept.documents.size(); ++i) {
        same = CompareScripts(i, whole);
    }
    return m_difference;
}

bool Comparison::CompareWorlds() {
    const auto& kept = m_kept.log.lines;
    const auto& read = m_read.log.lines;
    for (; m_logSeen < std::min(kept.size(), read.size()); ++m_logSeen) {
        if (!Same("log line", kept[m_logSeen], read[m_logSeen])) return false;
    }
    if (kept.size() > read.size()) return Same("further log line", kept[m_logSeen], {});
    if (kept.size() < read.size()) return Same("missing log line", {}, read[m_logSeen]);
    const auto& heard = m_kept.console.messages;
    const auto& wanted = m_read.console.messages;
    for (; m_messagesSeen < std::min(heard.size(), wanted.size()); ++m_messagesSeen) {
        if (!Same("console message", heard[m_messagesSeen], wanted[m_messagesSeen])) return false;
    }
    return Same("count of console messages", heard.size(), wanted.size()) &&
           Same("clock", m_kept.clock.Now(), m_read.clock.Now()) &&
           Same("lines run", m_kept.counts.lines, m_read.counts.lines) &&
           Same("lines failed", m_kept.counts.errors, m_read.counts.errors) &&
           Same("lines waiting", m_kept.counts.waits, m_read.counts.waits);
}

bool Comparison::CompareRequests() {
    if (!m_kept.client) return true;
    for (const char* source : {"srv", "dwa"}) {
        const auto* kept = m_kept.client->FindConnection(source);
        const auto* read = m_read.client->FindConnection(source);
        if (!Same("connection", kept != nullptr, read != nullptr)) return false;
        if (kept == nullptr) continue;
        const auto keptRows = m_kept.journal.Rows(*kept);
        const auto readRows = m_read.journal.Rows(*read);
        if (!Same("count of requests", keptRows.size(), readRows.size())) return false;
        if (keptRows.empty()) continue;
        if (!Same("tick of the last request", keptRows.back().tick, readRows.back().tick) ||
            !Same("last request", Show(keptRows.back().entry), Show(readRows.back().entry))) {
            return false;
        }
    }
    return true;
}

bool Comparison::CompareScripts(std::size_t index, bool whole) {
    engine::CKalvexDoc& kept = *m_kept.documents[index];
    engine::CKalvexDoc& read = *m_read.documents[index];
    m_context = FileName(index) + ' ';
    return Same("error code", kept.LastError().m_nErrorCode, read.LastError().m_nErrorCode) &&
           Same("error text", std::string(kept.LastError().m_strErrorText),
                std::string(read.LastError().m_strErrorText)) &&
           CompareState(kept.State(), read.State(), whole) && CompareVariables(kept, read) &&
           CompareViews(m_kept.views[index], m_read.views[index]) &&
           Same("modified", kept.IsModified(), read.IsModified()) &&
           Same("read only", kept.IsReadOnly(), read.IsReadOnly()) &&
           Same("state word", kept.GetStateWord(), read.GetStateWord()) &&
           Same("line count", kept.GetLineCount(), read.GetLineCount()) &&
           Same("line", std::string(kept.GetLine(kept.State().m_nCurrentLine)),
                std::string(read.GetLine(read.State().m_nCurrentLine))) &&
           (!whole || Same("text", kept.Text().GetText(), read.Text().GetText()));
}

bool Comparison::CompareState(const engine::RunState& kept, const engine::RunState& read,
                              bool whole) {
    return Same("current line", kept.m_nCurrentLine, read.m_nCurrentLine) &&
           Same("includes expanded", kept.m_bIncludesExpanded, read.m_bIncludesExpanded) &&
           Same("running", kept.m_bRunning, read.m_bRunning) &&
           Same("step requested", kept.m_bStepRequested, read.m_bStepRequested) &&
           Same("minimised", kept.m_bMinimised, read.m_bMinimised) &&
           Same("paused", kept.m_bPaused, read.m_bPaused) &&
           Same("reported line", kept.m_nReportedLine, read.m_nReportedLine) &&
           Same("reported error", kept.m_nReportedError, read.m_nReportedError) &&
           Same("error standing", kept.m_bErrorStanding, read.m_bErrorStanding) &&
           Same("step failed", kept.stepFailed, read.stepFailed) &&
           Same("priority", kept.m_nPriority, read.m_nPriority) &&
           Same("sleep until", kept.m_tSleepUntil, read.m_tSleepUntil) &&
           Same("pace counter", kept.m_nPaceCounter, read.m_nPaceCounter) &&
           Same("marked line", kept.m_nMarkedLine, read.m_nMarkedLine) &&
           Same("in procedure skip", kept.m_bInProcedureSkip, read.m_bInProcedureSkip) &&
           Same("in procedure body", kept.m_bInProcedureBody, read.m_bInProcedureBody) &&
           Same("control allowed", kept.m_bControlAllowed, read.m_bControlAllowed) &&
           Same("line report send", kept.m_bLineReportSend, read.m_bLineReportSend) &&
           Same("last line report", kept.m_tLastLineReport, read.m_tLastLineReport) &&
           Same("ignore unknown", kept.m_bIgnoreUnknown, read.m_bIgnoreUnknown) &&
           CompareStanding(kept.standing, read.standing) && CompareCalls(kept, read, whole) &&
           CompareWaits(kept, read) &&
           Same("report", kept.report.has_value(), read.report.has_value()) &&
           (!kept.report || (Same("report time", kept.report->time, read.report->time) &&
                             Same("report level", kept.report->level, read.report->level) &&
                             Same("report line", kept.report->line, read.report->line) &&
                             Same("report text", kept.report->text, read.report->text) &&
                             Same("report waiting", kept.report->waiting, read.report->waiting)));
}

bool Comparison::CompareStanding(const engine::LineStanding& kept,
                                 const engine::LineStanding& read) {
    return Same("outcome", kept.GetOutcome(), read.GetOutcome()) &&
           Same("since", kept.GetSince(), read.GetSince()) &&
           Same("last finished", kept.GetLastFinished(), read.GetLastFinished()) &&
           Same("stop cause", kept.GetStopCause(), read.GetStopCause()) &&
           Same("stopped", kept.GetStopped(), read.GetStopped()) &&
           Same("standing error", kept.GetError().code, read.GetError().code) &&
           Same("standing error text", kept.GetError().text, read.GetError().text) &&
           Same("standing error times", kept.GetError().times, read.GetError().times);
}

bool Comparison::CompareCalls(const engine::RunState& kept, const engine::RunState& read,
                              bool whole) {
    const std::size_t depth = kept.m_lstCallStack.size();
    if (!Same("depth of calls", depth, read.m_lstCallStack.size())) return false;
    auto keptFrame = kept.m_lstCallStack.rbegin();
    auto readFrame = read.m_lstCallStack.rbegin();
    const std::size_t frames = whole ? depth : std::min(depth, kNewestCalls);
    for (std::size_t i = 0; i < frames; ++i, ++keptFrame, ++readFrame) {
        if (!Same("return line", keptFrame->nReturnLine, readFrame->nReturnLine) ||
            !Same("arguments", keptFrame->arrArgs.size(), readFrame->arrArgs.size())) {
            return false;
        }
        for (std::size_t n = 0; n < keptFrame->arrArgs.size(); ++n) {
            const engine::CCallArg& keptArg = keptFrame->arrArgs[n];
            const engine::CCallArg& readArg = readFrame->arrArgs[n];
            if (!Same("argument", keptArg.strActual, readArg.strActual) ||
                !Same("parameter", keptArg.strFormal, readArg.strFormal)) {
                return false;
            }
        }
    }
    return true;
}

bool Comparison::CompareWaits(const engine::RunState& kept, const engine::RunState& read) {
    if (!Same("waits", kept.m_mapWaitFor.size(), read.m_mapWaitFor.size())) return false;
    auto other = read.m_mapWaitFor.begin();
    for (const auto& [line, wait] : kept.m_mapWaitFor) {
        const auto& [otherLine, otherWait] = *other++;
        if (!Same("wait key", line, otherLine) || !Same("wait line", wait.nLine, otherWait.nLine) ||
            !Same("wait next", wait.nNext, otherWait.nNext) ||
            !Same("wait day", wait.nDay, otherWait.nDay) ||
            !Same("wait month", wait.nMonth, otherWait.nMonth) ||
            !Same("wait year", wait.nYear, otherWait.nYear) ||
            !Same("wait times", wait.arrTimes, otherWait.arrTimes)) {
            return false;
        }
    }
    return true;
}

bool Comparison::CompareVariables(engine::CKalvexDoc& kept, engine::CKalvexDoc& read) {
    const operands::VariableTable& variables = kept.Variables();
    if (!Same("count of variables", variables.GetSize(), read.Variables().GetSize())) return false;
    const std::string script = m_context;
    auto other = read.Variables().begin();
    for (const auto& variable : variables) {
        m_context = script + variable->GetName() + ' ';
        if (!CompareVariable(*variable, **other++)) return false;
    }
    m_context = script;
    return true;
}

// A pointer is asked for no value: its lookup may change the error slot.
bool Comparison::CompareVariable(operands::CVariable& kept, operands::CVariable& read) {
    if (!Same("name", kept.GetName(), read.GetName()) ||
        !Same("kind", static_cast<int>(kept.GetKind()), static_cast<int>(read.GetKind()))) {
        return false;
    }
    if (kept.GetKind() == operands::VariablePointer) {
        const auto& pointer = static_cast<operands::CVariablePointer&>(kept);
        const auto& other = static_cast<operands::CVariablePointer&>(read);
        return Same("target name", pointer.GetTargetName(), other.GetTargetName()) &&
               Same("target", NameOf(pointer.LookUpTarget()), NameOf(other.LookUpTarget()));
    }
    if (kept.GetKind() == operands::VariableList) {
        return CompareLists(static_cast<operands::CVariableList&>(kept),
                            static_cast<operands::CVariableList&>(read));
    }
    for (const value::ValueKind kind : kKinds) {
        value::CVal keptValue;
        value::CVal readValue;
        const int keptResult = kept.GetValue(keptValue, kind, operands::kAsStored);
        const int readResult = read.GetValue(readValue, kind, operands::kAsStored);
        if (!Same("readable", keptResult, readResult) || !Same("value", keptValue, readValue)) {
            return false;
        }
        if (kept.GetKind() != operands::VariableRemote) continue;
        if (!Same("ready", kept.IsReady(kind), read.IsReady(kind)) ||
            !Same("usable", kept.GetValue(keptValue, kind, 0), read.GetValue(readValue, kind, 0))) {
            return false;
        }
    }
    return Same("request start", kept.GetRequestStart(), read.GetRequestStart()) &&
           Same("request end", kept.GetRequestEnd(), read.GetRequestEnd());
}

bool Comparison::CompareLists(const operands::CVariableList& kept,
                              const operands::CVariableList& read) {
    if (!Same("iterator", kept.GetIterator(), read.GetIterator()) ||
        !Same("element count", kept.Elements().size(), read.Elements().size())) {
        return false;
    }
    for (std::size_t i = 0; i < kept.Elements().size(); ++i) {
        if (!Same("element", kept.Elements()[i], read.Elements()[i])) return false;
    }
    return true;
}

bool Comparison::CompareViews(const SeenView& kept, const SeenView& read) {
    return Same("selected line", kept.selected, read.selected) &&
           Same("markers", kept.markers, read.markers) &&
           Same("view read only", kept.readOnly, read.readOnly) &&
           Same("titles drawn", kept.titles, read.titles) &&
           Same("variables drawn", kept.refreshes, read.refreshes);
}

}  // namespace kalvex::differential
