// Has the hours of archives rolled up once they have ended, in pieces between what is urgent. Main
// thread.
#pragma once

#include <cstdint>
#include <optional>

#include "server/Store.h"

namespace kalvex::server {

class Rollups {
  public:
    // The store outlives it.
    explicit Rollups(Store& store) : m_store(store) {}

    void OnOutcome(const StoreOutcome& outcome);
    // While the store cannot be written nothing is added to what waits.
    void OnTrouble(bool isOver) { m_isTrouble = !isOver; }

    // About once a second, with the confirmed time. What the store has kept from before is found at
    // the first step.
    void Step(std::int64_t confirmed);

  private:
    void RollUpSome();

    Store& m_store;
    bool m_isDue = true;
    bool m_isUnderWay = false;
    bool m_isTrouble = false;
    std::int64_t m_now = 0;
    std::optional<std::int64_t> m_hour;
};

}  // namespace kalvex::server
