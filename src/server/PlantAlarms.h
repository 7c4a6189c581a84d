// The alarms of the plant: what the limits of its variables make of their values, with the journal
// in the store and a line each in the log. Main thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Clock.h"
#include "platform/Translator.h"
#include "server/Alarms.h"
#include "server/Plant.h"
#include "server/Store.h"

namespace kalvex::server {

class PlantAlarms {
  public:
    // Lines that the log has of alarms in a second; further ones are counted.
    static constexpr std::size_t kLinesASecond = 20;

    using LogLine = std::function<void(const std::string& text)>;  // an engine text

    // All outlive it. It judges the values of the plant from now on.
    PlantAlarms(Plant& plant, Store& store, const platform::Clock& clock,
                const platform::Translator& translator, LogLine log);

    // Takes in what the store has kept. Once, before Define.
    void Load();

    // The plant has been defined. Alarms whose limits are gone end here; others are looked at anew
    // with the next step.
    void Define();

    // About once a second, behind the signals: delays, values that do not come.
    void Step();

    // ---- acknowledgement

    // Whether a client that writes this value acknowledges the alarms of the variable: it is the
    // value that stands, with CONFIRMED_ALARM.
    bool IsAcknowledgement(const PlantVariable& variable, const value::CVal& written) const;
    // All that have been of a variable whose alarm bits the server keeps. `client` and `user` are
    // for the log.
    void Acknowledge(PlantVariable& variable, const Origin& origin, const std::string& client,
                     const std::string& user);

    // What has to go to the store since the last call.
    std::vector<StoreOperation> TakeOperations();

  private:
    struct Entry {
        Alarms alarms;
        std::shared_ptr<const AlarmLimits> limits;
        std::array<AlarmId, kAlarmStageCount> ids{};  // of the last one of each stage
        std::optional<std::int64_t> due;              // elapsed time of the next look
    };

    // What the log had no line for.
    struct LeftOut {
        std::size_t begun = 0;
        std::size_t ended = 0;
        std::size_t acknowledged = 0;
    };

    void Judge(PlantVariable& variable, const value::CVal& value);
    // False when there is nothing left of it.
    bool DefineEntry(VariableId id, Entry& entry);
    void Record(VariableId id, Entry& entry, const std::string& name, std::int64_t time,
                const std::vector<AlarmChange>& changes);
    void Plan(VariableId id, Entry& entry);
    void Tell(const char* polish, std::initializer_list<std::string_view> values,
              std::size_t& leftOut);
    void TellLeftOut();

    Plant& m_plant;
    Store& m_store;
    const platform::Clock& m_clock;
    const platform::Translator& m_translator;
    LogLine m_log;
    std::unordered_map<VariableId, Entry> m_entries;
    std::map<std::int64_t, std::vector<VariableId>> m_looks;  // by elapsed time
    std::vector<StoreOperation> m_operations;
    std::size_t m_lines = 0;  // since the last step
    LeftOut m_leftOut;
};

}  // namespace kalvex::server
