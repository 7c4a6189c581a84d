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

    // Once a second, behind the archive values of that second, with the confirmed time. Periods
    // that ended while there was no server are made up for, 62 days back; with none on record, or
    // one that is still to come, the first is the one under way.
    void Step(const Definitions& definitions, std::int64_t now);

    // The plant has other variables now: a period that is half handed over is begun again.
    void OnDefine();

  private:
    struct Place {
        std::int64_t time = 0;     // the first report that is not handed over to the store yet
        std::size_t variable = 0;  // the first variable of it
    };

    // Nothing while the store cannot take it down.
    std::optional<Place> FirstPlace(value::ValueKind kind, int dayStart, std::int64_t now);
    std::optional<Place> Begin(value::ValueKind kind, std::int64_t time);
    bool HandOver(value::ValueKind kind, int dayStart, std::int64_t now, Place& place);

    const Plant& m_plant;
    Store& m_store;
    Store::Done m_done;
    std::map<value::ValueKind, Place> m_places;
};

}  // namespace kalvex::server
