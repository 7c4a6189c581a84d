// The description of simulated data servers, as a JSON file gives it. Ticks count from 1; what is
// to happen at tick 0 happens before the first.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "value/Status.h"
#include "value/Value.h"

namespace kalvex::vantrel {

// A value published at a tick.
struct PlantCurrent {
    std::int64_t atTick = 0;
    value::CVal value;
    bool stamped = false;  // false: its time is the moment of that tick
};

// The value that a variable has come to at a time of the plant's clock. Called as the seconds go,
// which may also be set back; its time is the plant's to set.
using PlantSignal = std::function<value::CVal(std::int64_t now)>;

struct SimulatedVariable {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<PlantCurrent> current;
    PlantSignal signal;                                                      // none in a file
    std::map<value::ValueKind, std::map<std::int64_t, value::CVal>> stored;  // by kind and time
    std::optional<std::uint16_t> accessError;
    std::optional<std::uint16_t> readError;
    std::optional<std::uint16_t> writeError;
};

// Out from tick `from` on, back at tick `to`.
struct PlantOutage {
    std::int64_t from = 0;
    std::int64_t to = 0;
    std::uint32_t reason = 0;
};

struct PlantReportChange {
    std::int64_t atTick = 0;
    value::ValueKind kind = value::KindNone;
    std::int64_t time = 0;
};

struct PlantSource {
    std::string name;
    std::optional<std::int64_t> connectAtTick = 0;  // empty: never
    std::int64_t dataAtTick = 0;
    std::int64_t latencyTicks = 1;
    std::vector<PlantOutage> outages;
    std::vector<SimulatedVariable> variables;  // in the order of the file
    std::vector<PlantReportChange> reportChanges;
};

struct PlantDefinition {
    std::vector<PlantSource> sources;
};

// Reads the file (UTF-8). Local times are those of TZ. False with the file, the line and what is
// wrong there in `fault` (UTF-8).
bool ReadPlant(const std::string& path, PlantDefinition& plant, std::string& fault);

}  // namespace kalvex::vantrel
