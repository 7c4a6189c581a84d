#include "sources/ReportNotifications.h"

#include <algorithm>
#include <utility>

#include "sources/SourceFamilies.h"
#include "text/LineScanner.h"

namespace kalvex {

namespace {

// The kind for one of the four words of reports.
ValueKind ReportKind(std::string_view word) {
    const ValueKind kind = KindFromWord(word);
    return IsReport(kind) ? kind : KindNone;
}

LineOutcome Enable(StatementCall& call, bool enable) {
    const ValueKind kind = ReportKind(NextToken(call.rest));
    const std::string_view source = NextToken(call.rest);
    CScriptSources* sources = call.document.Services().sources;
    if (sources == nullptr || kind == KindNone) return LineOutcome::Failed;
    CReportNotifications& notifications = CReportNotifications::Of(call.document);
    CNotifyRecord* record = notifications.Find(kind, source);
    if (record == nullptr) {
        if (!enable || !sources->AddNotifyDoc(kind, source, call.document)) {
            return LineOutcome::Failed;
        }
        record = &notifications.Add(kind, source);
    }
    record->bEnabled = enable;
    return LineOutcome::Finished;
}

// The record that a function's arguments name; null when nothing was ever enabled.
CNotifyRecord* RecordOf(FunctionCall& call) {
    auto* notifications =
        call.script.FindPart<CReportNotifications>(DocumentPart::ReportNotifications);
    if (notifications == nullptr) return nullptr;
    return notifications->Find(ReportKind(call.arguments[0]), call.arguments[1]);
}

}  // namespace

CReportNotifications& CReportNotifications::Of(CKalvexDoc& document) {
    return document.GetPart<CReportNotifications>(DocumentPart::ReportNotifications, document);
}

void CReportNotifications::ClearRunState() {
    for (const ValueKind kind : kReportKinds) {
        for (const CNotifyRecord& record : std::exchange(m_arrRecords[ReportIndex(kind)], {})) {
            m_document.Services().sources->RemoveNotifyDoc(kind, record.strSource, m_document);
        }
    }
}

CNotifyRecord* CReportNotifications::Find(ValueKind kind, std::string_view source) {
    if (!IsReport(kind)) return nullptr;
    std::vector<CNotifyRecord>& records = m_arrRecords[ReportIndex(kind)];
    for (CNotifyRecord& record : records) {
        if (record.strSource == source) return &record;
    }
    return nullptr;
}

CNotifyRecord& CReportNotifications::Add(ValueKind kind, std::string_view source) {
    CNotifyRecord& record = m_arrRecords[ReportIndex(kind)].emplace_back();
    record.strSource = source;
    return record;
}

void CReportNotifications::OnReportChange(ValueKind kind, std::string_view source,
                                          std::int64_t time) {
    CNotifyRecord* record = Find(kind, source);
    if (record == nullptr || !record->bEnabled) return;
    std::deque<std::int64_t>& times = record->arrTimes;
    if (std::find(times.begin(), times.end(), time) == times.end()) times.push_back(time);
}

LineOutcome ExecuteEnableNotify(StatementCall& call) {
    return Enable(call, true);
}

LineOutcome ExecuteDisableNotify(StatementCall& call) {
    return Enable(call, false);
}

FunctionResult Notify(FunctionCall& call) {
    CNotifyRecord* record = RecordOf(call);
    std::int64_t time = 0;
    if (record != nullptr && record->bEnabled && !record->arrTimes.empty()) {
        time = record->arrTimes.front();
        record->arrTimes.pop_front();
    }
    call.out = CVal(time);
    return FunctionResult::Done;
}

FunctionResult NotifyQueueCount(FunctionCall& call) {
    const CNotifyRecord* record = RecordOf(call);
    call.out = CVal(record == nullptr ? 0 : static_cast<int>(record->arrTimes.size()));
    return FunctionResult::Done;
}

}  // namespace kalvex
