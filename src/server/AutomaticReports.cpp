#include "server/AutomaticReports.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "server/ReportPeriods.h"
#include "value/LocalTime.h"

namespace kalvex::server {

namespace {

constexpr std::int64_t kFarthestDays = 62;
constexpr std::size_t kReportsTogether = 50;

std::string ProgressName(value::ValueKind kind) {
    return kind == value::KindHour ? "hour" : kind == value::KindDay ? "day" : "month";
}

// The first report that is made up for.
std::int64_t Farthest(value::ValueKind kind, std::int64_t now, int dayStart) {
    const std::int64_t time =
        std::max<std::int64_t>(now - kFarthestDays * value::kSecondsPerDay, 0);
    return CoveringReport(kind, time, dayStart);
}

// Whether the archive that the report is computed from may be gone in part.
bool IsPast(const VariableConfig& config, value::ValueKind kind, std::int64_t time,
            std::int64_t now) {
    return kind == value::KindHour && config.keepDays != 0 &&
           time < now - config.keepDays * value::kSecondsPerDay;
}

}  // namespace

void AutomaticReports::Step(const Definitions& definitions, std::int64_t now, bool sure) {
    const int dayStart = static_cast<int>(definitions.dayStart);
    for (const value::ValueKind kind : definitions.automatic) {
        const std::int64_t present = CoveringReport(kind, now, dayStart);
        if (m_places.count(kind) == 0) {
            const std::optional<Place> first = FirstPlace(kind, present);
            if (!first) return;
            m_places[kind] = *first;
        }
        Place& place = m_places[kind];
        if (!Return(kind, present, sure, place)) return;
        const std::int64_t farthest = Farthest(kind, now, dayStart);
        if (place.time < farthest) place = Place{farthest};
        while (CoveredSpan(kind, place.time, dayStart).end <= now) {
            if (!HandOver(kind, dayStart, now, place)) return;
        }
    }
}

// A clock that goes back and forth leaves the place where it is.
bool AutomaticReports::Return(value::ValueKind kind, std::int64_t present, bool sure,
                              Place& place) {
    if (place.time <= present) {
        place.back.reset();
        return true;
    }
    if (!place.back) place.back = present;
    if (!sure) return true;
    const std::optional<Place> returned = Begin(kind, std::min(*place.back, present));
    if (returned) place = *returned;
    return returned.has_value();
}

void AutomaticReports::OnDefine() {
    for (auto& [kind, place] : m_places) place.variable = 0;
}

std::optional<AutomaticReports::Place> AutomaticReports::FirstPlace(value::ValueKind kind,
                                                                    std::int64_t present) {
    const std::optional<std::int64_t> recorded = m_store.Progress(ProgressName(kind));
    return recorded ? Place{*recorded} : Begin(kind, present);
}

std::optional<AutomaticReports::Place> AutomaticReports::Begin(value::ValueKind kind,
                                                               std::int64_t time) {
    std::vector<StoreOperation> operations;
    operations.emplace_back(SaveProgress{ProgressName(kind), time});
    if (!m_store.Submit(std::move(operations), Store::Urgency::Now, {})) return std::nullopt;
    return Place{time};
}

// What the store does not take now is handed over at a later step. The end of the report is marked
// in the last submission, so that a report cut off by the end of the server is computed again.
bool AutomaticReports::HandOver(value::ValueKind kind, int dayStart, std::int64_t now,
                                Place& place) {
    for (bool last = false; !last;) {
        std::vector<StoreOperation> operations;
        std::size_t index = place.variable;
        for (; index < m_plant.Size() && operations.size() < kReportsTogether; ++index) {
            const PlantVariable& variable = m_plant.At(index);
            if ((variable.config.reports & vantrel::ReportBit(kind)) == 0) continue;
            if (IsPast(variable.config, kind, place.time, now)) continue;
            operations.emplace_back(MakeReport{vantrel::PeriodAction::Load,
                                               variable.id,
                                               kind,
                                               place.time,
                                               variable.config.rule,
                                               dayStart,
                                               now,
                                               {kServerItself, now}});
        }
        last = index == m_plant.Size();
        const std::int64_t next = NextReportTime(kind, place.time);
        if (last) operations.emplace_back(SaveProgress{ProgressName(kind), next});
        if (!m_store.Submit(std::move(operations), Store::Urgency::Background, m_done)) {
            return false;
        }
        place = last ? Place{next, 0} : Place{place.time, index};
    }
    return true;
}

}  // namespace kalvex::server
