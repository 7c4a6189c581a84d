// Where the log lines of scripts and connections go. Main thread.
#pragma once

#include <string_view>

namespace kalvex::platform {

// A message above the configured level is dropped by the receiver.
enum LogLevel : int { LogAlways = 0, LogErrors = 1, LogEvents = 2, LogTransmission = 3 };

class LogSink {
  public:
    virtual ~LogSink() = default;
    virtual void Log(std::string_view text, int level) = 0;  // Windows-1250
};

}  // namespace kalvex::platform
