// What an operator does in the course of a run, as a JSON file.
#include "fuzz/fuzz.h"
#include "programs/kalvex-run/Actions.h"
#include "support/scratch_folder.h"

namespace kalvex::fuzz {

namespace {

constexpr std::size_t kScripts = 2;

constexpr const char* kTexts[] = {
    R"([{"atTick": 1, "script": 0, "do": "start"}, {"atTick": 2, "script": 1, "do": "stop"},
{"atTick": 6, "script": 0, "do": "breakpoint", "line": 7},
{"atTick": 9, "script": 1, "do": "setValue", "variable": "\u0141\u0104KA", "text": "#1,5 \u017c"}])",
    "[]",
    "{}",
    "[\n3]",
    R"([{"atTick": 99999999999999999999, "script": -1, "do": "step", "do": "x"}])",
    R"([{"atTick": 1.0, "script": 2, "do": "reset"}, [[[[]]]], null, true, "a"])",
};

}  // namespace

std::vector<std::string> FuzzCorpus() {
    return {std::begin(kTexts), std::end(kTexts)};
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kalvex::support::ScratchFolder folder;
    const std::string path = folder.Put("actions.json", kalvex::fuzz::Bytes(data, size));
    std::vector<kalvex::run::Action> actions;
    std::string fault;
    const bool read = kalvex::run::ReadActions(path, kalvex::fuzz::kScripts, actions, fault);
    kalvex::fuzz::Demand(read == fault.empty(), "what is refused has a reason");
    kalvex::fuzz::Demand(read || fault.starts_with(path + ":"), "a fault has a place");
    if (!read) return 0;
    for (const kalvex::run::Action& action : actions) {
        kalvex::fuzz::Demand(action.row != nullptr, "an action is known");
        kalvex::fuzz::Demand(action.atTick >= 1, "an action has a tick");
        kalvex::fuzz::Demand(action.script < kalvex::fuzz::kScripts, "an action has a script");
    }
    return 0;
}
