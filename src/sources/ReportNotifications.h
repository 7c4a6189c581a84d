// The report changes that a document has been told of and has not taken yet, a queue for each kind
// of report and source. The document owns it. Main thread.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "engine/ScriptDocument.h"
#include "operands/DocumentPart.h"

namespace kalvex::sources {

struct NotifyRecord {
    std::string strSource;
    bool bEnabled = false;
    std::deque<std::int64_t> arrTimes;         // oldest first, no time twice
    std::unordered_set<std::int64_t> waiting;  // the same times
};

class ReportNotifications final : public operands::DocumentPart {
  public:
    explicit ReportNotifications(engine::CKalvexDoc& document) : m_document(document) {}

    // The notifications of a document, made at first use.
    static ReportNotifications& Of(engine::CKalvexDoc& document);

    // Empties the queues and takes the document off the connections.
    void ClearRunState() override;

    // Null when there is none, and for a kind that is none of a report.
    NotifyRecord* Find(value::ValueKind kind, std::string_view source);
    NotifyRecord& Add(value::ValueKind kind, std::string_view source);

    // Puts the time into the queue if that is enabled and does not hold it yet.
    void OnReportChange(value::ValueKind kind, std::string_view source, std::int64_t time);

  private:
    engine::CKalvexDoc& m_document;
    std::array<std::vector<NotifyRecord>, value::kReportKinds.size()> m_records;
};

}  // namespace kalvex::sources
