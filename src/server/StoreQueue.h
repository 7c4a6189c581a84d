// What waits to be written, in its order, and how much of it goes into one transaction. What is
// taken leaves the queue when it is committed and not before. One thread at a time, but for what a
// batch points to: that stands still until the batch is taken off.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <vector>

#include "server/StoreFile.h"

namespace kalvex::server {

// Bytes that may wait, one submission more. Behind each bound:
struct StoreLimits {
    std::size_t clients = std::size_t{384} << 20;   // what clients ask for is refused
    std::size_t urgent = std::size_t{512} << 20;    // everything urgent is
    std::size_t background = std::size_t{4} << 20;  // what can wait comes later
};

enum class StoreUrgency {
    Now,
    // Behind all that was urgent before it, between what came later, and dropped at the end.
    Background,
};

class StoreQueue {
  public:
    using Done = std::function<void(const StoreOutcome&)>;

    struct Finished {
        Done done;  // may be empty
        StoreOutcome outcome;
    };

    explicit StoreQueue(const StoreLimits& limits) : m_limits(limits) {}

    bool HasRoomForClients() const { return m_urgent.bytes < m_limits.clients; }
    bool HasRoom(StoreUrgency urgency) const;
    // Room or not, it is taken.
    void Push(std::vector<StoreOperation> operations, StoreUrgency urgency, Done done);
    // Goes with the next batch.
    void PushName(StoreName name) { m_names.push_back(std::move(name)); }

    bool Empty() const { return m_urgent.waiting.empty() && m_background.waiting.empty(); }
    std::size_t Operations() const;  // that wait

    // What comes next in one transaction; never empty unless the queue is. A submission of more
    // operations than a batch holds is cut, any other is whole.
    StoreBatch Next();

    // Takes off what the last batch had, with what has come of each of its parts. The answer has
    // the submissions that are written to their end by it.
    std::vector<Finished> Take(const StoreBatch& batch, std::vector<StoreOutcome> outcomes);

    void DropBackground();

    // Urgent submissions, counted since the beginning.
    std::uint64_t Made() const { return m_urgentMade; }
    std::uint64_t Written() const { return m_urgentWritten; }

  private:
    struct Submission {
        std::vector<StoreOperation> operations;
        Done done;
        std::size_t bytes = 0;
        std::size_t written = 0;  // operations of it
        std::uint64_t after = 0;  // the urgent submission that a background one follows
        StoreOutcome outcome;
    };

    struct Lane {
        std::deque<Submission> waiting;
        std::size_t bytes = 0;
        std::size_t taken = 0;  // submissions that the last batch has part in
    };

    static bool Add(Submission& submission, std::size_t& room, StoreBatch& batch);
    std::size_t TakeFrom(Lane& lane, const StoreBatch& batch, std::size_t part,
                         std::vector<StoreOutcome>& outcomes, std::vector<Finished>& finished);

    const StoreLimits m_limits;
    std::deque<StoreName> m_names;
    Lane m_urgent;
    Lane m_background;
    std::uint64_t m_urgentMade = 0;
    std::uint64_t m_urgentWritten = 0;
};

}  // namespace kalvex::server
