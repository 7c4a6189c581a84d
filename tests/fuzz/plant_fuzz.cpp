// The plant of a run as a JSON file, and a moment of the data servers that it describes.
#include <iterator>
#include <utility>

#include "fuzz/fuzz.h"
#include "support/scratch_folder.h"
#include "support/zone_scope.h"
#include "vantrel/plant/SimulatedPlant.h"

namespace kalvex::fuzz {

namespace {

constexpr std::int64_t kTicks = 25;

constexpr const char* kWhole = R"({"sources": {"srv": {
  "connectAtTick": 5, "dataAtTick": 7, "latencyTicks": 2,
  "outages": [{"from": 10, "to": 20, "reason": 4104}],
  "reportChanges": [{"atTick": 3, "kind": "hour", "time": "2024-03-10 07:00:00"}],
  "variables": {
    "A": {"attributes": {"de": "opis", "at": 2}, "current": [{"atTick": 0, "value": 1.5},
          {"atTick": 4, "value": "x", "time": "2024-03-10 07:00:00", "status": 1}]},
    "B": {"hour": [{"time": 1710050400, "value": true}], "archive": [{"time": 0, "value": null}],
          "accessError": 1, "readError": 2, "writeError": 65535}}}}})";

constexpr const char* kPieces[] = {
    kWhole,
    "",
    "{}",
    R"({"sources": []})",
    R"({"sources": {"a": {"connectAtTick": null}}})",
    R"({"sources": {"a": {"variables": {"\u0105\ud83c\udf0d": {"current": [{"value": 1e999}]}}}}})",
    R"([[[[[[[[{"a": -0.0e-7}]]]]]]]])",
};

}  // namespace

std::vector<std::string> FuzzCorpus() {
    return {std::begin(kPieces), std::end(kPieces)};
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kalvex::support::ZoneScope zone("Europe/Warsaw");
    static const kalvex::support::ScratchFolder folder;
    const std::string path = folder.Put("plant.json", kalvex::fuzz::Bytes(data, size));
    kalvex::vantrel::PlantDefinition plant;
    std::string fault;
    const bool read = kalvex::vantrel::ReadPlant(path, plant, fault);
    kalvex::fuzz::Demand(read == fault.empty(), "what is refused has a reason");
    kalvex::fuzz::Demand(read || fault.starts_with(path + ":"), "a fault has a place");
    if (!read) return 0;
    const kalvex::platform::VirtualClock clock(1710068400);
    kalvex::vantrel::SimulatedPlant servers(std::move(plant), clock);
    for (std::int64_t tick = 1; tick <= kalvex::fuzz::kTicks; ++tick) servers.AdvanceTo(tick);
    return 0;
}
