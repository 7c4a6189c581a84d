#include "server/LateReports.h"

#include <algorithm>
#include <map>
#include <utility>

#include "server/ReportPeriods.h"
#include "text/TextFormat.h"
#include "value/LocalTime.h"
#include "value/LocalTimeText.h"

namespace kalvex::server {

namespace {

// In one transaction; clients' writes wait behind it.
constexpr std::size_t kReportsTogether = 100;

constexpr const char* kKept = platform::Translatable(
    "Późne dane, raport użytkownika pozostaje: zmienna %s, %s od %s, razem %d");

// From what is kept a report of an older period would come out of a part of its values.
std::int64_t KeptSince(const VariableConfig& config, value::ValueKind kind, std::int64_t now) {
    const std::int64_t days = kind == value::KindArchive ? config.keepDays : config.reportsKeepDays;
    return days == 0 ? 0 : now - days * value::kSecondsPerDay;
}

}  // namespace

void LateReports::Mark(const PlantVariable& variable, value::ValueKind kind, std::int64_t time,
                       int dayStart, std::int64_t confirmed,
                       std::vector<StoreOperation>& operations) {
    const ReportName above = ReportAbove(kind, time, dayStart);
    if (above.kind == value::KindNone) return;
    const TimeSpan span = CoveredSpan(above.kind, above.time, dayStart);
    if (span.end > confirmed || span.begin < KeptSince(variable.config, kind, confirmed)) return;
    operations.emplace_back(
        MarkLate{{variable.id, above.kind, above.time}, variable.config.rule, dayStart});
    m_isMarked = true;
}

void LateReports::Step(std::int64_t now, std::int64_t confirmed) {
    m_now = now;
    m_confirmed = confirmed;
    if (m_isMarked && !m_isComputing) Compute();
}

void LateReports::Compute() {
    std::vector<StoreOperation> operations;
    operations.emplace_back(ComputeLate{m_confirmed, kReportsTogether, {kServerItself, m_now}});
    m_isComputing = m_store.Submit(std::move(operations), Store::Urgency::Background,
                                   [this](const StoreOutcome& outcome) {
                                       m_isComputing = false;
                                       m_done(outcome);
                                       if (outcome.lateLeft) Compute();
                                   });
    m_isMarked = !m_isComputing;
}

std::vector<std::string> KeptLines(const std::vector<HistoryKey>& kept, Plant& plant,
                                   const platform::Translator& translator) {
    std::map<std::pair<VariableId, value::ValueKind>, std::vector<std::int64_t>> times;
    for (const HistoryKey& key : kept) times[{key.variable, key.kind}].push_back(key.time);
    std::vector<std::string> lines;
    for (const auto& [report, all] : times) {
        const PlantVariable* variable = plant.Lookup(report.first);
        if (variable == nullptr) continue;
        lines.push_back(text::FormatText(
            translator.Translate(kKept),
            {variable->config.name, value::WordOfKind(report.second),
             value::FormatLocalTime(*std::ranges::min_element(all)), std::to_string(all.size())}));
    }
    return lines;
}

}  // namespace kalvex::server
