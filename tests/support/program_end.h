#pragma once

#include <optional>
#include <string>
#include <thread>

#include "platform/Processes.h"

namespace kalvex::support {

// The exit code of a program that is waited for; nothing when its state cannot be read.
inline std::optional<int> ExitCodeOf(platform::Processes& processes, int id) {
    std::string error;
    std::optional<int> code = processes.GetExitCode(id, error);
    while (code == platform::Processes::kStillActive) {
        std::this_thread::yield();
        code = processes.GetExitCode(id, error);
    }
    return code;
}

}  // namespace kalvex::support
