#include "server/Recorder.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <variant>

#include "server/ReportPeriods.h"
#include "value/LocalTime.h"
#include "value/Status.h"

namespace kalvex::server {

namespace {

constexpr const char* kAlive = "alive";
constexpr const char* kConfirmed = "confirmed";
constexpr unsigned kByServer = vantrel::ArchiveBit::Changes | vantrel::ArchiveBit::Samples;
constexpr std::int64_t kStepBack = 60;  // a longer one corrects a clock that was ahead

}  // namespace

void Recorder::Begin(std::int64_t now) {
    std::optional<std::int64_t> alive = m_store.Progress(kAlive);
    m_lastSave = now;
    m_newest = alive;
    if (alive && *alive > now) alive = m_store.Progress(kConfirmed);
    if (!alive || *alive + 1 >= now) return;
    for (std::size_t index = 0; index < m_plant.Size(); ++index) {
        const PlantVariable& variable = m_plant.At(index);
        if ((variable.config.archive & kByServer) != 0) AddGap(variable, *alive + 1, now);
    }
    Submit(now, m_done);
}

// Amounts belong to the hour in which they are stamped, so the last one does not stand again behind
// the gap, and the hour in which the gap ends has to be told of it, too.
void Recorder::AddGap(const PlantVariable& variable, std::int64_t from, std::int64_t now) {
    m_pending.emplace_back(MarkGap{variable.id, from, now - 1});
    if (variable.config.rule == ReportRule::Sum) {
        const std::int64_t hour = ReportTime(value::KindHour, now);
        m_pending.emplace_back(
            PutValue{variable.id, value::KindArchive, std::max(from, hour), NoValue()});
    } else if (variable.value.GetType() != value::ValueType::None) {
        value::CVal value = variable.value;
        value.SetTime(now);
        m_pending.emplace_back(PutValue{variable.id, value::KindArchive, now, std::move(value)});
    }
}

void Recorder::OnChanges(const std::vector<std::size_t>& changed) {
    for (const std::size_t index : changed) {
        PlantVariable& variable = m_plant.At(index);
        if ((variable.config.archive & vantrel::ArchiveBit::Changes) == 0) continue;
        // An amount is not to be counted twice because of its status.
        const bool isStatusAlone = variable.changedAt != variable.value.GetTime();
        if (isStatusAlone && variable.config.rule == ReportRule::Sum) continue;
        if (IsBehind(variable.changedAt)) {
            ++variable.unarchived;
            continue;
        }
        value::CVal value = variable.value;
        value.SetTime(variable.changedAt);
        m_pending.emplace_back(PutValue{variable.id, value::KindArchive, variable.changedAt,
                                        std::move(value),
                                        isStatusAlone ? Origin() : variable.origin});
    }
}

bool Recorder::IsBehind(std::int64_t time) {
    if (!m_newest || time > *m_newest || *m_newest - time > kStepBack) return false;
    m_behind = m_behind || time < *m_newest;
    return m_behind;
}

void Recorder::CatchUp(std::int64_t now) {
    m_newest = now;
    if (!std::exchange(m_behind, false)) return;
    for (std::size_t index = 0; index < m_plant.Size(); ++index) {
        PlantVariable& variable = m_plant.At(index);
        const std::size_t values = std::exchange(variable.unarchived, 0);
        if (values == 0) continue;
        // One amount does not stand for several.
        const bool isPart = variable.config.rule == ReportRule::Sum && values > 1;
        value::CVal value = isPart ? NoValue() : variable.value;
        value.SetTime(now);
        m_pending.emplace_back(PutValue{variable.id, value::KindArchive, now, std::move(value),
                                        isPart ? Origin() : variable.origin});
    }
}

// What was recorded before is no part of the client's transaction, which is not to be cut for it.
bool Recorder::TakesWrites(std::int64_t now) {
    if (!m_pending.empty()) Submit(now, m_done);
    return !m_loss && m_store.HasRoomForClients();
}

void Recorder::Add(std::vector<StoreOperation> operations) {
    m_pending.insert(m_pending.end(), std::make_move_iterator(operations.begin()),
                     std::make_move_iterator(operations.end()));
}

void Recorder::Write(std::vector<StoreOperation> operations, std::int64_t now, Store::Done done) {
    Add(std::move(operations));
    Submit(now, done);
}

void Recorder::Step(const Definitions& definitions, std::int64_t now, std::int64_t confirmed) {
    if (!IsBehind(now)) {
        CatchUp(now);
        AddSamples(definitions.archivePeriod, now);
    }
    if (now < m_lastSave || now - m_lastSave >= definitions.savePeriod) {
        AddUnsaved();
        m_lastSave = now;
    }
    SaveAlive(now, confirmed);
    Submit(now, m_done);
    RemoveOld(confirmed);
}

void Recorder::SaveAlive(std::int64_t now, std::int64_t confirmed) {
    m_pending.emplace_back(SaveProgress{kAlive, now});
    m_pending.emplace_back(SaveProgress{kConfirmed, confirmed});
}

void Recorder::End(std::int64_t now, std::int64_t confirmed) {
    AddUnsaved();
    SaveAlive(now, confirmed);
    Submit(now, m_done);
    if (!m_loss) return;
    m_loss->over = true;
    m_onLoss(*m_loss);
}

void Recorder::AddSamples(std::int64_t period, std::int64_t now) {
    const std::int64_t sample = now / period;
    if (m_lastSample == sample) return;
    // At the start a period that is under way is left to end.
    const bool due = m_lastSample || now % period == 0;
    m_lastSample = sample;
    if (!due) return;
    for (std::size_t index = 0; index < m_plant.Size(); ++index) {
        const PlantVariable& variable = m_plant.At(index);
        if ((variable.config.archive & vantrel::ArchiveBit::Samples) == 0) continue;
        m_pending.emplace_back(PutValue{variable.id, value::KindArchive, now, variable.value});
    }
}

void Recorder::AddUnsaved() {
    const auto save = [this](VariableId id, VariableState& state) {
        if (state.saved && !m_saveAll) return;
        state.saved = true;
        m_pending.emplace_back(SaveLastValue{id, state.value, state.origin});
    };
    for (std::size_t index = 0; index < m_plant.Size(); ++index) {
        save(m_plant.At(index).id, m_plant.At(index));
    }
    for (auto& [id, state] : m_plant.Retired()) save(id, state);
    m_saveAll = false;
}

void Recorder::Submit(std::int64_t now, const Store::Done& done) {
    if (!m_store.HasRoom(Store::Urgency::Now)) return Lose(now);
    if (m_loss) EndLoss(now);
    m_store.Submit(std::exchange(m_pending, {}), Store::Urgency::Now, done);
}

void Recorder::Lose(std::int64_t now) {
    const bool begins = !m_loss;
    if (begins) m_loss = ValueLoss{.from = now};
    m_loss->to = now;
    for (const StoreOperation& operation : std::exchange(m_pending, {})) {
        const auto* put = std::get_if<PutValue>(&operation);
        if (put == nullptr) continue;
        ++m_loss->values;
        ++m_lost;
        m_lostSince.try_emplace(put->variable, put->time);
    }
    m_saveAll = true;
    if (begins) m_onLoss(*m_loss);
}

// The gaps go before what is recorded now.
void Recorder::EndLoss(std::int64_t now) {
    std::vector<StoreOperation> recorded = std::exchange(m_pending, {});
    for (std::size_t index = 0; index < m_plant.Size(); ++index) {
        const PlantVariable& variable = m_plant.At(index);
        const auto lost = m_lostSince.extract(variable.id);
        if (!lost.empty()) AddGap(variable, lost.mapped(), now);
    }
    for (const auto& [variable, since] : std::exchange(m_lostSince, {})) {
        m_pending.emplace_back(MarkGap{variable, since});
    }
    Add(std::move(recorded));
    m_loss->over = true;
    m_onLoss(*std::exchange(m_loss, std::nullopt));
}

void Recorder::RemoveOld(std::int64_t now) {
    if (m_plant.Size() == 0) return;
    std::vector<StoreOperation> operations;
    const auto before = [now](std::int64_t days) { return now - days * value::kSecondsPerDay; };
    for (std::size_t count = m_plant.Size() / value::kSecondsPerHour + 1; count > 0; --count) {
        m_nextRemoval = (m_nextRemoval + 1) % m_plant.Size();
        const PlantVariable& variable = m_plant.At(m_nextRemoval);
        if (const std::int64_t days = variable.config.keepDays; days != 0) {
            operations.emplace_back(RemoveArchive{variable.id, before(days)});
            operations.emplace_back(RemoveAlarms{variable.id, before(days)});
        }
        if (const std::int64_t days = variable.config.reportsKeepDays; days != 0) {
            operations.emplace_back(RemoveReports{variable.id, before(days)});
        }
    }
    if (operations.empty()) return;
    m_store.Submit(std::move(operations), Store::Urgency::Background, {});
}

}  // namespace kalvex::server
