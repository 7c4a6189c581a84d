#include "server/PlantAlarms.h"

#include <iterator>
#include <utility>

#include "text/TextFormat.h"
#include "value/Status.h"
#include "value/ValueText.h"

namespace kalvex::server {

namespace {

constexpr const char* kBegan = platform::Translatable("Alarm %s %s: %s");
constexpr const char* kEnded = platform::Translatable("Koniec alarmu %s %s: %s");
constexpr const char* kAcknowledged =
    platform::Translatable("Alarm %s potwierdzony: klient %s, użytkownik %s");
constexpr const char* kLeftOut =
    platform::Translatable("Alarmy bez wierszy w logu: początków %d, końców %d, potwierdzeń %d");

std::string NumberText(std::optional<double> number) {
    return number ? value::FormatDouble(*number) : "-";
}

}  // namespace

PlantAlarms::PlantAlarms(Plant& plant, Store& store, const platform::Clock& clock,
                         const platform::Translator& translator, LogLine log)
    : m_plant(plant),
      m_store(store),
      m_clock(clock),
      m_translator(translator),
      m_log(std::move(log)) {
    m_plant.OnValue(
        [this](PlantVariable& variable, const value::CVal& value) { Judge(variable, value); });
}

void PlantAlarms::Load() {
    const KeptAlarms& kept = m_store.AlarmsAtOpening();
    for (const KeptAlarms::Standing& alarm : kept.standing) {
        Entry& entry = m_entries[alarm.variable];
        entry.alarms.Restore(alarm.stage);
        entry.ids[AlarmIndex(alarm.stage)] = alarm.id;
    }
    for (const VariableId variable : kept.waiting) m_entries[variable].alarms.RestoreWaiting();
}

void PlantAlarms::Define() {
    m_looks.clear();
    for (std::size_t index = 0; index < m_plant.Size(); ++index) {
        const PlantVariable& variable = m_plant.At(index);
        if (variable.config.alarms && variable.config.alarms->HasAny()) m_entries[variable.id];
    }
    for (auto row = m_entries.begin(); row != m_entries.end();) {
        row = DefineEntry(row->first, row->second) ? std::next(row) : m_entries.erase(row);
    }
}

bool PlantAlarms::DefineEntry(VariableId id, Entry& entry) {
    PlantVariable* variable = m_plant.Lookup(id);
    const bool begins = entry.limits == nullptr || !entry.limits->HasAny();
    entry.limits = std::make_shared<AlarmLimits>();
    if (variable != nullptr && variable->config.alarms) entry.limits = variable->config.alarms;
    if (begins && variable != nullptr) entry.alarms.Begin(variable->value, m_clock.Elapsed());
    entry.due.reset();
    if (entry.limits->HasAny()) {
        m_looks[m_clock.Elapsed()].push_back(id);
        entry.due = m_clock.Elapsed();
    } else {
        const std::string name = variable == nullptr ? std::string() : variable->config.name;
        Record(id, entry, name, m_clock.Now(), entry.alarms.Look(*entry.limits, m_clock.Elapsed()));
    }
    const bool stays = entry.limits->HasAny() || entry.alarms.WaitsForAcknowledgement();
    if (variable != nullptr) {
        variable->alarmBits = entry.alarms.Status();
        m_plant.ShowAlarms(*variable, m_clock.Now());
        if (!stays) variable->alarmBits.reset();
    }
    return stays;
}

void PlantAlarms::Judge(PlantVariable& variable, const value::CVal& value) {
    Entry& entry = m_entries.at(variable.id);
    Record(variable.id, entry, variable.config.name, value.GetTime(),
           entry.alarms.Take(*entry.limits, value, m_clock.Elapsed()));
    variable.alarmBits = entry.alarms.Status();
    Plan(variable.id, entry);
}

void PlantAlarms::Step() {
    TellLeftOut();
    const std::int64_t elapsed = m_clock.Elapsed();
    while (!m_looks.empty() && m_looks.begin()->first <= elapsed) {
        const auto looks = m_looks.extract(m_looks.begin());
        for (const VariableId id : looks.mapped()) {
            const auto found = m_entries.find(id);
            if (found == m_entries.end() || found->second.due != looks.key()) continue;
            Entry& entry = found->second;
            PlantVariable& variable = *m_plant.Lookup(id);
            entry.due.reset();
            Record(id, entry, variable.config.name, m_clock.Now(),
                   entry.alarms.Look(*entry.limits, elapsed));
            variable.alarmBits = entry.alarms.Status();
            m_plant.ShowAlarms(variable, m_clock.Now());
            Plan(id, entry);
        }
    }
}

// A look that is planned already comes first, and plans the next one.
void PlantAlarms::Plan(VariableId id, Entry& entry) {
    const auto next = entry.alarms.NextLook(*entry.limits, m_clock.Elapsed());
    if (!next || (entry.due && *entry.due <= *next)) return;
    entry.due = next;
    m_looks[*next].push_back(id);
}

void PlantAlarms::Record(VariableId id, Entry& entry, const std::string& name, std::int64_t time,
                         const std::vector<AlarmChange>& changes) {
    for (const AlarmChange& change : changes) {
        const std::string_view word = RowOf(change.stage).word;
        const std::string number = NumberText(entry.alarms.Number());
        AlarmId& alarm = entry.ids[AlarmIndex(change.stage)];
        if (!change.began) {
            m_operations.emplace_back(EndAlarm{alarm, time});
            if (!name.empty()) Tell(kEnded, {name, word, number}, m_leftOut.ended);
            continue;
        }
        alarm = m_store.NewAlarm();
        m_operations.emplace_back(
            BeginAlarm{alarm, id, change.stage, time, entry.alarms.Number(),
                       change.after ? entry.ids[AlarmIndex(*change.after)] : 0});
        Tell(kBegan, {name, word, number}, m_leftOut.begun);
    }
}

// ---- acknowledgement

bool PlantAlarms::IsAcknowledgement(const PlantVariable& variable,
                                    const value::CVal& written) const {
    const value::CVal& standing = variable.value;
    return variable.alarmBits && (*variable.alarmBits & value::Status::AlarmMem) != 0 &&
           (written.GetStatus() & value::Status::ConfirmedAlarm) != 0 &&
           written.GetType() == standing.GetType() && written == standing;
}

void PlantAlarms::Acknowledge(PlantVariable& variable, const Origin& origin,
                              const std::string& client, const std::string& user) {
    Entry& entry = m_entries.at(variable.id);
    if (!entry.alarms.Acknowledge()) return;
    m_operations.emplace_back(AcknowledgeAlarms{variable.id, origin});
    variable.alarmBits = entry.alarms.Status();
    m_plant.ShowAlarms(variable, origin.time);
    if (!entry.limits->HasAny()) {
        variable.alarmBits.reset();
        m_entries.erase(variable.id);
    }
    Tell(kAcknowledged, {variable.config.name, client, user}, m_leftOut.acknowledged);
}

std::vector<StoreOperation> PlantAlarms::TakeOperations() {
    return std::exchange(m_operations, {});
}

// ---- the log

void PlantAlarms::Tell(const char* polish, std::initializer_list<std::string_view> values,
                       std::size_t& leftOut) {
    if (m_lines == kLinesASecond) {
        ++leftOut;
        return;
    }
    ++m_lines;
    m_log(text::FormatText(m_translator.Translate(polish), values));
}

void PlantAlarms::TellLeftOut() {
    m_lines = 0;
    const LeftOut leftOut = std::exchange(m_leftOut, {});
    if (leftOut.begun + leftOut.ended + leftOut.acknowledged == 0) return;
    m_log(text::FormatText(m_translator.Translate(kLeftOut),
                           {std::to_string(leftOut.begun), std::to_string(leftOut.ended),
                            std::to_string(leftOut.acknowledged)}));
}

}  // namespace kalvex::server
