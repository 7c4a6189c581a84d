#include "server/Recorder.h"

#include <algorithm>
#include <utility>

#include "value/LocalTime.h"
#include "value/Status.h"

namespace kalvex::server {

namespace {

constexpr const char* kBusy = platform::Translatable("zbyt wiele danych czeka na zapis");
constexpr const char* kAlive = "alive";

}  // namespace

void Recorder::Begin(std::int64_t now) {
    const std::optional<std::int64_t> alive = m_store.Progress(kAlive);
    m_lastSave = now;
    if (!alive || *alive + 1 >= now) return;
    for (std::size_t index = 0; index < m_plant.Size(); ++index) {
        const PlantVariable& variable = m_plant.At(index);
        if ((variable.config.archive &
             (vantrel::ArchiveBit::Changes | vantrel::ArchiveBit::Samples)) == 0)
            continue;
        m_pending.emplace_back(MarkGap{variable.id, *alive + 1});
        if (variable.value.GetType() == value::ValueType::None) continue;
        value::CVal value = variable.value;
        value.SetTime(now);
        m_pending.emplace_back(PutValue{variable.id, value::KindArchive, now, std::move(value)});
    }
    Submit();
}

void Recorder::OnChanges(const std::vector<std::size_t>& changed) {
    for (const std::size_t index : changed) {
        const PlantVariable& variable = m_plant.At(index);
        if ((variable.config.archive & vantrel::ArchiveBit::Changes) == 0) continue;
        m_pending.emplace_back(
            PutValue{variable.id, value::KindArchive, variable.value.GetTime(), variable.value});
    }
}

void Recorder::Step(const Definitions& definitions, std::int64_t now) {
    AddSamples(definitions.archivePeriod, now);
    if (now < m_lastSave || now - m_lastSave >= definitions.savePeriod) {
        AddUnsaved();
        m_lastSave = now;
    }
    if (!m_pending.empty()) m_pending.emplace_back(SaveProgress{kAlive, now});
    Submit();
    RemoveOld(definitions.keepDays, now);
}

void Recorder::End(std::int64_t now) {
    AddUnsaved();
    m_pending.emplace_back(SaveProgress{kAlive, now});
    Submit();
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
        m_pending.emplace_back(SaveLastValue{id, state.value});
    };
    for (std::size_t index = 0; index < m_plant.Size(); ++index) {
        save(m_plant.At(index).id, m_plant.At(index));
    }
    for (auto& [id, state] : m_plant.Retired()) save(id, state);
    m_saveAll = false;
}

void Recorder::Submit() {
    if (m_pending.empty()) return;
    const bool taken = m_store.Submit(std::exchange(m_pending, {}), Store::Urgency::Now,
                                      [this](const StoreOutcome& outcome) {
                                          if (!outcome.committed) m_saveAll = true;
                                          m_done(outcome);
                                      });
    if (taken) return;
    m_saveAll = true;
    m_done({false, m_translator.Translate(kBusy), {}});
}

void Recorder::RemoveOld(std::int64_t keepDays, std::int64_t now) {
    if (keepDays == 0 || m_plant.Size() == 0) return;
    std::vector<StoreOperation> operations;
    for (std::size_t count = m_plant.Size() / value::kSecondsPerHour + 1; count > 0; --count) {
        m_nextRemoval = (m_nextRemoval + 1) % m_plant.Size();
        operations.emplace_back(
            RemoveArchive{m_plant.At(m_nextRemoval).id, now - keepDays * value::kSecondsPerDay});
    }
    m_store.Submit(std::move(operations), Store::Urgency::Background, {});
}

}  // namespace kalvex::server
