// Takes the plant's values into the store: archives as the attribute "at" of each variable says,
// current values for the next start, what clients write. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "server/Plant.h"
#include "server/Store.h"

namespace kalvex::server {

// Archive values that the store had no room for.
struct ValueLoss {
    bool over = false;
    std::size_t values = 0;
    std::int64_t from = 0;
    std::int64_t to = 0;
};

class Recorder {
  public:
    using LossHandler = std::function<void(const ValueLoss&)>;

    // All outlive the recorder. `done` hears of each submission. `onLoss` is told when a loss
    // begins and when it is over.
    Recorder(Plant& plant, Store& store, Store::Done done, LossHandler onLoss)
        : m_plant(plant), m_store(store), m_done(std::move(done)), m_onLoss(std::move(onLoss)) {}

    // Marks the time since the server was last alive in the archives. Before the first step.
    void Begin(std::int64_t now);

    // Values that have been set.
    void OnChanges(const std::vector<std::size_t>& changed);

    // What goes with the next submission.
    void Add(std::vector<StoreOperation> operations);

    // What a client writes, behind all that was recorded before. Only while TakesWrites.
    void Write(std::vector<StoreOperation> operations, std::int64_t now, Store::Done done);
    bool TakesWrites(std::int64_t now);

    // Values are being lost, and the archives do not tell of it yet.
    bool IsLosing() const { return m_loss.has_value(); }
    std::uint64_t Lost() const { return m_lost; }  // archive values since the start

    // Once a second, behind the changes: samples, and everything that is due goes to the store.
    // What is old is so by the confirmed time.
    void Step(const Definitions& definitions, std::int64_t now, std::int64_t confirmed);

    // The last step: all current values that are not saved yet.
    void End(std::int64_t now, std::int64_t confirmed);

  private:
    bool IsBehind(std::int64_t time);
    void CatchUp(std::int64_t now);
    void AddSamples(std::int64_t period, std::int64_t now);
    void AddUnsaved();
    void SaveAlive(std::int64_t now, std::int64_t confirmed);
    void AddGap(const PlantVariable& variable, std::int64_t from, std::int64_t now);
    void RemoveOld(std::int64_t now);
    void Submit(std::int64_t now, const Store::Done& done);
    void Lose(std::int64_t now);
    void EndLoss(std::int64_t now);

    Plant& m_plant;
    Store& m_store;
    Store::Done m_done;
    LossHandler m_onLoss;
    std::vector<StoreOperation> m_pending;
    // The newest second that has been archived. A clock that goes back by seconds passes through
    // seconds that have their values already: those come to the archive in the next new second.
    std::optional<std::int64_t> m_newest;
    bool m_behind = false;
    std::optional<ValueLoss> m_loss;
    std::uint64_t m_lost = 0;
    std::unordered_map<VariableId, std::int64_t> m_lostSince;
    bool m_saveAll = false;                    // after a loss
    std::optional<std::int64_t> m_lastSample;  // counted in periods since 1970
    std::size_t m_nextRemoval = 0;             // each variable comes about once an hour
    std::int64_t m_lastSave = 0;
};

}  // namespace kalvex::server
