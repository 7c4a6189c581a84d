// What scripts have asked of their connections, with the ticks at which they did.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "vantrel/Requests.h"

namespace kalvex::vantrel {

class TickJournal final : public RequestJournal {
  public:
    struct Row {
        std::int64_t tick;
        JournalEntry entry;
    };

    void SetTick(std::int64_t tick) { m_tick = tick; }
    void Record(const CClientConnection& connection, JournalEntry entry) override {
        m_rows[&connection].push_back({m_tick, std::move(entry)});
    }

    // In the order of the calls. The view lasts until the next call.
    std::span<const Row> Rows(const CClientConnection& connection) const {
        const auto found = m_rows.find(&connection);
        return found == m_rows.end() ? std::span<const Row>() : found->second;
    }

  private:
    std::int64_t m_tick = 0;
    std::map<const CClientConnection*, std::vector<Row>> m_rows;
};

}  // namespace kalvex::vantrel
