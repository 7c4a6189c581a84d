// Parcels on their way to a carrier that writes one at a time. Any thread.
#pragma once

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>

namespace kalvex::vantrel {

class Outbox final {
  public:
    // Of the bytes that wait at one time.
    explicit Outbox(std::size_t limit) : m_limit(limit) {}

    enum class Put { Queued, WriterNeeded, Full };
    enum class Next { Parcel, Nothing, End };

    // WriterNeeded: the caller sees to it that Take is called, now and after each parcel it gives.
    // Full: the parcel has not been taken over.
    Put Add(std::string parcel);

    // Nothing is added any more; behind what waits comes the end.
    Put Close();

    // Nothing: the writer rests until WriterNeeded. End: it is done for good. `drained` tells that
    // the backlog, which somebody had asked for and which was not 0, has gone.
    Next Take(std::string& parcel, bool& drained);

    // Parcels that wait or are being written.
    std::size_t Backlog() const;

    // True when since the last call the writer has not come by, though there was something to write
    // all the time.
    bool IsStuck();

  private:
    Put Wake();

    const std::size_t m_limit;
    mutable std::mutex m_mutex;
    std::deque<std::string> m_parcels;
    std::size_t m_bytes = 0;
    bool m_writing = false;  // the writer has been called and has not come to its rest
    bool m_taken = false;    // it has a parcel
    bool m_closed = false;
    bool m_moved = true;
    mutable bool m_backlogSeen = false;
};

}  // namespace kalvex::vantrel
