// Has reports computed anew when what they are computed from comes late or is corrected. Main
// thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Translator.h"
#include "server/Plant.h"
#include "server/Store.h"

namespace kalvex::server {

class LateReports {
  public:
    // The store outlives it. `done` hears of what was committed.
    LateReports(Store& store, Store::Done done) : m_store(store), m_done(std::move(done)) {}

    // What has that kind and time is about to change: adds the mark of the report above it, if its
    // period has ended by the confirmed time.
    void Mark(const PlantVariable& variable, value::ValueKind kind, std::int64_t time, int dayStart,
              std::int64_t confirmed, std::vector<StoreOperation>& operations);

    // About once a second, with the time and the confirmed one. Marks that the store has kept from
    // before are found at the first step.
    void Step(std::int64_t now, std::int64_t confirmed);

  private:
    void Compute();

    Store& m_store;
    Store::Done m_done;
    bool m_isMarked = true;
    bool m_isComputing = false;
    std::int64_t m_now = 0;
    std::int64_t m_confirmed = 0;
};

// Lines of the log about late reports that stay as a person has written them, one for each variable
// and kind; engine texts. A variable that is not there any more has none.
std::vector<std::string> KeptLines(const std::vector<HistoryKey>& kept, Plant& plant,
                                   const platform::Translator& translator);

}  // namespace kalvex::server
