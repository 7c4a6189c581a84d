// Takes the plant's values into the store: archives as the attribute "at" of each variable says,
// current values for the next start. Main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Translator.h"
#include "server/Plant.h"
#include "server/Store.h"

namespace kalvex::server {

class Recorder {
  public:
    // All outlive the recorder. `done` hears of each transaction, and of what the store was too
    // busy to take as of one that failed.
    Recorder(Plant& plant, Store& store, const platform::Translator& translator, Store::Done done)
        : m_plant(plant), m_store(store), m_translator(translator), m_done(std::move(done)) {}

    // Marks the time since the server was last alive in the archives. Before the first step.
    void Begin(std::int64_t now);

    // Values that have been set.
    void OnChanges(const std::vector<std::size_t>& changed);

    // Once a second, behind the changes: samples, and everything that is due goes to the store.
    // What is old is so by the confirmed time.
    void Step(const Definitions& definitions, std::int64_t now, std::int64_t confirmed);

    // The last step: all current values that are not saved yet.
    void End(std::int64_t now);

  private:
    bool IsBehind(std::int64_t time);
    void CatchUp(std::int64_t now);
    void AddSamples(std::int64_t period, std::int64_t now);
    void AddUnsaved();
    void RemoveOld(std::int64_t keepDays, std::int64_t now);
    void Submit();

    Plant& m_plant;
    Store& m_store;
    const platform::Translator& m_translator;
    Store::Done m_done;
    std::vector<StoreOperation> m_pending;
    // The newest second that has been archived. A clock that goes back by seconds passes through
    // seconds that have their values already: those come to the archive in the next new second.
    std::optional<std::int64_t> m_newest;
    bool m_behind = false;
    bool m_saveAll = false;                    // after a failed transaction
    std::optional<std::int64_t> m_lastSample;  // counted in periods since 1970
    std::size_t m_nextRemoval = 0;             // each variable comes about once an hour
    std::int64_t m_lastSave = 0;
};

}  // namespace kalvex::server
