// How the store's writer passes the time until it tries a failed transaction again.
#pragma once

#include <chrono>
#include <memory>

namespace kalvex::server {

class StorePause {
  public:
    virtual ~StorePause() = default;

    // Returns after that time, or as soon as it is cut short. The writer's thread.
    virtual void Wait(std::chrono::milliseconds time) = 0;

    // Ends the wait that is under way, or else the next one. Any thread.
    virtual void Cut() = 0;
};

std::shared_ptr<StorePause> MakeTimedPause();

}  // namespace kalvex::server
