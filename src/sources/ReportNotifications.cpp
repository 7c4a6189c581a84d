#include "sources/ReportNotifications.h"

#include <utility>

#include "sources/SourceFamilies.h"
#include "text/LineScanner.h"

namespace kalvex::sources {

namespace {

// The kind for one of the four words of reports.
value::ValueKind ReportKind(std::string_view word) {
    const value::ValueKind kind = value::KindFromWord(word);
    return value::IsReport(kind) ? kind : value::KindNone;
}

engine::LineOutcome Enable(engine::StatementCall& call, bool enable) {
    const value::ValueKind kind = ReportKind(text::NextToken(call.rest));
    const std::string_view source = text::NextToken(call.rest);
    engine::ScriptSources* sources = call.document.Services().sources;
    if (sources == nullptr || kind == value::KindNone) return engine::LineOutcome::Failed;
    ReportNotifications& notifications = ReportNotifications::Of(call.document);
    NotifyRecord* record = notifications.Find(kind, source);
    if (record == nullptr) {
        if (!enable || !sources->AddNotifyDoc(kind, source, call.document)) {
            return engine::LineOutcome::Failed;
        }
        record = &notifications.Add(kind, source);
    }
    record->bEnabled = enable;
    return engine::LineOutcome::Finished;
}

// The record that a function's arguments name; null when nothing was ever enabled.
NotifyRecord* RecordOf(operands::FunctionCall& call) {
    auto* notifications =
        call.script.FindPart<ReportNotifications>(operands::PartId::ReportNotifications);
    if (notifications == nullptr) return nullptr;
    return notifications->Find(ReportKind(call.arguments[0]), call.arguments[1]);
}

}  // namespace

ReportNotifications& ReportNotifications::Of(engine::CKalvexDoc& document) {
    return document.GetPart<ReportNotifications>(operands::PartId::ReportNotifications, document);
}

void ReportNotifications::ClearRunState() {
    for (const value::ValueKind kind : value::kReportKinds) {
        for (const NotifyRecord& record : std::exchange(m_records[value::ReportIndex(kind)], {})) {
            m_document.Services().sources->RemoveNotifyDoc(kind, record.strSource, m_document);
        }
    }
}

NotifyRecord* ReportNotifications::Find(value::ValueKind kind, std::string_view source) {
    if (!value::IsReport(kind)) return nullptr;
    std::vector<NotifyRecord>& records = m_records[value::ReportIndex(kind)];
    for (NotifyRecord& record : records) {
        if (record.strSource == source) return &record;
    }
    return nullptr;
}

NotifyRecord& ReportNotifications::Add(value::ValueKind kind, std::string_view source) {
    NotifyRecord& record = m_records[value::ReportIndex(kind)].emplace_back();
    record.strSource = source;
    return record;
}

void ReportNotifications::OnReportChange(value::ValueKind kind, std::string_view source,
                                         std::int64_t time) {
    NotifyRecord* record = Find(kind, source);
    if (record == nullptr || !record->bEnabled) return;
    if (record->waiting.insert(time).second) record->arrTimes.push_back(time);
}

engine::LineOutcome ExecuteEnableNotify(engine::StatementCall& call) {
    return Enable(call, true);
}

engine::LineOutcome ExecuteDisableNotify(engine::StatementCall& call) {
    return Enable(call, false);
}

operands::FunctionResult Notify(operands::FunctionCall& call) {
    NotifyRecord* record = RecordOf(call);
    std::int64_t time = 0;
    if (record != nullptr && record->bEnabled && !record->arrTimes.empty()) {
        time = record->arrTimes.front();
        record->arrTimes.pop_front();
        record->waiting.erase(time);
    }
    call.out = value::CVal(time);
    return operands::FunctionResult::Done;
}

operands::FunctionResult NotifyQueueCount(operands::FunctionCall& call) {
    const NotifyRecord* record = RecordOf(call);
    call.out = value::CVal(record == nullptr ? 0 : static_cast<int>(record->arrTimes.size()));
    return operands::FunctionResult::Done;
}

}  // namespace kalvex::sources
