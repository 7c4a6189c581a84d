// Scripts, and what happens to them, run with kept forms and read anew: a difference ends the
// process. An input is a row of fields, each a line of a script or an event.
#include <array>

#include "differential/Generator.h"
#include "differential/Lockstep.h"
#include "fuzz/WireFields.h"
#include "fuzz/fuzz.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "support/zone_scope.h"

namespace kalvex::fuzz {
namespace {

using differential::Event;
using differential::EventKind;
using differential::Scenario;

constexpr std::uint64_t kTextField = 2;  // a tag's low bits
constexpr int kTicks = 40;
constexpr std::size_t kMostLines = 200;
constexpr int kCorpusSeeds = 60;

enum Field : std::uint64_t {
    FirstScript = 1,
    SecondScript,
    Included,
    Settings,    // a byte of them
    FirstEvent,  // and those behind it in the order of the kinds: two bytes and a text
};

constexpr std::array<bool Scenario::*, 5> kSettings = {&Scenario::sources, &Scenario::started,
                                                       &Scenario::stepwise, &Scenario::watched,
                                                       &Scenario::published};

std::uint64_t TagOf(std::uint64_t field) {
    return field << 3 | kTextField;
}

void AddLine(std::string& text, std::string line) {
    // A list that is filled up to any time may be endless.
    if (line.find("FILL") != std::string::npos) return;
    std::erase(line, '\n');
    text += line + '\n';
}

void AddEvent(Scenario& scenario, std::uint64_t number, std::string_view content) {
    constexpr std::size_t kBytes = 2;
    Event event;
    event.kind = static_cast<EventKind>(number % static_cast<std::uint64_t>(EventKind::Count));
    event.tick = scenario.events.empty() ? 0 : scenario.events.back().tick;
    if (!content.empty()) event.tick += static_cast<unsigned char>(content[0]) % kTicks;
    if (content.size() > 1) event.number = static_cast<unsigned char>(content[1]);
    if (content.size() > kBytes && content.find("FILL") == std::string_view::npos)
        event.text = content.substr(kBytes);
    scenario.events.push_back(std::move(event));
}

Scenario ScenarioOf(const std::vector<WireField>& fields) {
    Scenario scenario;
    scenario.ticks = kTicks;
    scenario.patience = 1;
    scenario.tickLengths = {1, 1000, 1, 60000};
    std::string first;
    std::string second;
    for (const WireField& field : fields) {
        const std::uint64_t number = field.tag >> 3;
        if (number == Settings) {
            for (std::size_t i = 0; i < kSettings.size() && !field.content.empty(); ++i)
                scenario.*kSettings[i] = (field.content[0] >> i & 1) != 0;
        } else if (number >= FirstEvent) {
            AddEvent(scenario, number - FirstEvent, field.content);
        } else {
            AddLine(number == SecondScript ? second
                    : number == Included   ? scenario.included
                                           : first,
                    field.content);
        }
    }
    scenario.scripts = {first};
    if (!second.empty()) scenario.scripts.push_back(second);
    return scenario;
}

void AddLines(std::vector<WireField>& fields, Field field, const std::string& text) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        fields.push_back({TagOf(field), text.substr(start, end - start)});
        start = end + 1;
    }
}

std::string FieldsOf(const Scenario& scenario) {
    std::vector<WireField> fields;
    std::string settings(1, '\0');
    for (std::size_t i = 0; i < kSettings.size(); ++i) {
        if (scenario.*kSettings[i]) settings[0] = static_cast<char>(settings[0] | 1 << i);
    }
    fields.push_back({TagOf(Settings), settings});
    AddLines(fields, FirstScript, scenario.scripts[0]);
    if (scenario.scripts.size() > 1) AddLines(fields, SecondScript, scenario.scripts[1]);
    AddLines(fields, Included, scenario.included);
    int tick = 0;
    for (const Event& event : scenario.events) {
        const std::string bytes = {static_cast<char>((event.tick - tick) % kTicks),
                                   static_cast<char>(event.number)};
        fields.push_back(
            {TagOf(FirstEvent + static_cast<std::uint64_t>(event.kind)), bytes + event.text});
        tick = event.tick;
    }
    return JoinFields(fields);
}

}  // namespace

std::vector<std::string> FuzzCorpus() {
    std::vector<std::string> corpus{""};
    for (int seed = 1; seed <= kCorpusSeeds; ++seed)
        corpus.push_back(
            FieldsOf(differential::MakeScenario(static_cast<std::uint64_t>(seed), kTicks)));
    return corpus;
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kalvex::support::ZoneScope zone("Europe/Warsaw");
    static const kalvex::support::ScratchFolder folder;
    static const kalvex::differential::Tables tables{kalvex::language::Statements(),
                                                     kalvex::language::Functions()};
    std::vector<kalvex::fuzz::WireField> fields;
    kalvex::fuzz::SplitFields(kalvex::fuzz::Bytes(data, size), fields);
    if (fields.size() > kalvex::fuzz::kMostLines) return 0;
    const kalvex::differential::Scenario scenario = kalvex::fuzz::ScenarioOf(fields);
    const kalvex::differential::Verdict verdict =
        kalvex::differential::RunBothWays(folder, scenario, tables);
    if (!verdict.difference.empty()) {
        std::fprintf(stderr, "%s%s\n", Describe(scenario).c_str(), verdict.difference.c_str());
    }
    kalvex::fuzz::Demand(verdict.difference.empty(), "the two ways differ");
    return 0;
}
