// The figures of a data server's health, and their texts from one table. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/DurationCounts.h"
#include "platform/Translator.h"

namespace kalvex::server {

struct StoreFigures {
    std::size_t waiting = 0;     // operations
    std::uint64_t stored = 0;    // operations since the start
    std::uint64_t repeated = 0;  // transactions that have failed, since the start
    platform::DurationCounts commits = {};
};

struct ServerFigures {
    std::int64_t uptime = 0;  // seconds
    std::size_t clients = 0;  // that have logged in
    std::size_t strangers = 0;
    std::size_t variables = 0;
    std::size_t subscriptions = 0;
    StoreFigures store = {};
    std::uint64_t lost = 0;  // archive values since the start
    std::optional<std::uint64_t> freeBytes = {};
    std::uint64_t storeBytes = 0;
    std::uint64_t memory = 0;  // bytes
};

// A line a figure, for the log; engine texts.
std::vector<std::string> FormatHealthLines(const ServerFigures& figures,
                                           const platform::Translator& translator);

// The text exposition format 0.0.4 of Prometheus, UTF-8.
std::string FormatHealthMetrics(const ServerFigures& figures);

}  // namespace kalvex::server
