// Logs for tests: one that keeps its lines, one that only counts them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/LogSink.h"
#include "text/CodePage.h"

namespace kalvex::support {

class LogRecorder final : public platform::LogSink {
  public:
    void Log(std::string_view text, int level) override {
        lines.emplace_back(level, text::ToUtf8(text));
    }

    // The lines so far as "level text"; they are forgotten.
    std::vector<std::string> Take() {
        std::vector<std::string> taken;
        for (const auto& [level, text] : std::exchange(lines, {})) {
            taken.push_back(std::to_string(level) + " " + text);
        }
        return taken;
    }

    std::vector<std::pair<int, std::string>> lines;  // level and text, UTF-8
};

class SilentLog final : public platform::LogSink {
  public:
    void Log(std::string_view, int) override { ++lines; }

    std::uint64_t lines = 0;
};

}  // namespace kalvex::support
