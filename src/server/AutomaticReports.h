// Has reports computed when their period has ended, as the configuration asks. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>

#include "server/Plant.h"
#include "server/Store.h"

namespace kalvex::server {

class AutomaticReports {
  public:
    // Both outlive it. `done` hears of what was committed.
    AutomaticReports(const Plant& plant, Store& store, Store::Done done)
        : m_plant(plant), m_store(store), m_done(std::move(done)) {}

    // Once a second, behind the archive values of that second, with the confirmed time and whether
    // that is sure. Periods that ended while there was no server are made up for, 62 days back, and
    // hours no farther than archive values are kept. With none on record the first is the one under
    // way; with one that is still to come it is, once the time is sure, the one that was under way
    // when the clock went back.
    void Step(const Definitions& definitions, std::int64_t now, bool sure);

    // The plant has other variables now: a period that is half handed over is begun again.
    void OnDefine();

  private:
    struct Place {
        std::int64_t time = 0;     // the first report that is not handed over to the store yet
        std::size_t variable = 0;  // the first variable of it
        std::optional<std::int64_t> back = {};  // where to return to if the clock is right
    };

    // Nothing while the store cannot take it down.
    std::optional<Place> FirstPlace(value::ValueKind kind, std::int64_t present);
    std::optional<Place> Begin(value::ValueKind kind, std::int64_t time);
    bool Return(value::ValueKind kind, std::int64_t present, bool sure, Place& place);
    bool HandOver(value::ValueKind kind, int dayStart, std::int64_t now, Place& place);

    const Plant& m_plant;
    Store& m_store;
    Store::Done m_done;
    std::map<value::ValueKind, Place> m_places;
};

}  // namespace kalvex::server
