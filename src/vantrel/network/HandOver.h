// From the threads of a carrier to the main thread, in order and within bounds: a reader that is
// too fast is asked to pause.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/MainLoop.h"

namespace kalvex::vantrel {

class HandOver final : public std::enable_shared_from_this<HandOver> {
  public:
    // From `limit` on, in units of the weights, the reader is to pause. The loop outlives the time
    // until Stop.
    HandOver(platform::MainLoop& loop, std::size_t limit) : m_loop(loop), m_limit(limit) {}

    // Called when a paused reader may go on: once for each Push that answered false. Set before the
    // first Push; called on the main thread.
    void OnRoom(std::function<void()> resume) { m_resume = std::move(resume); }

    // Takes an event that is to run on the main thread. False asks the reader to pause. Any thread.
    bool Push(std::function<void()> event, std::size_t weight);

    // Nothing runs any more: what waits and what still comes is dropped. Main thread.
    void Stop();

  private:
    struct Event {
        std::function<void()> run;
        std::size_t weight;
    };

    void Deliver();

    platform::MainLoop& m_loop;
    const std::size_t m_limit;
    std::function<void()> m_resume = [] {};
    std::mutex m_mutex;
    std::vector<Event> m_events;
    std::size_t m_weight = 0;  // of all events that have not been run
    bool m_posted = false;
    bool m_bPaused = false;
    bool m_stopped = false;
};

}  // namespace kalvex::vantrel
