// How long a tick takes, over many scripts that sleep, wait or run: the middle one, the one that 99
// of 100 do not exceed, and the longest, by the steady clock; and what processor time 99 of 100 do
// not exceed, since others use the machine too. The scripts live under a virtual clock that goes on
// by a millisecond a tick. Fails when a script has not done exactly what so many ticks make it do.
#include <fmt/format.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/ScriptDocument.h"
#include "engine/Tick.h"
#include "platform/SteadyTime.h"
#include "script_services.h"
#include "sources/ClientInterface.h"
#include "value/ValueText.h"
#include "vantrel/plant/SimulatedPlant.h"

namespace kalvex::bench {
namespace {

constexpr int kWarmTicks = 200;
constexpr std::int64_t kBudget = 500;  // microseconds of a tick

[[noreturn]] void Fail(const std::string& what) {
    fmt::print(stderr, "tick_bench: {}\n", what);
    std::exit(EXIT_FAILURE);
}

// Scripts of one text.
struct Group {
    int count;
    const char* text;
    int line;  // on which they stand in the end, -1 for any
    bool minimised = false;
    int stepsEach = 0;    // due steps a tick; 0: one in fifty ticks
    bool counts = false;  // it counts in N
    bool spread = false;  // started in fifty groups, a tick apart
    bool turns = false;   // with a budget it has its turns and not each tick
};

struct Scenario {
    const char* name;
    std::vector<Group> groups;
    int ticks;
    bool budget = false;  // as a service has it
};

constexpr const char* kLoop = "LOCAL N = 0\n:w\nSET N = N + 1\nGOTO w\n";
constexpr const char* kTopLoop = "LOCAL N = 0\nPRIORITY 1\n:w\nSET N = N + 1\nGOTO w\n";

class World {
  public:
    World() {
        m_world.services.sources = &m_client;
        m_world.services.counts = &m_counts;
    }

    void Write(const std::string& name, const std::string& text) { m_world.folder.Put(name, text); }

    engine::CKalvexDoc& Open(const std::string& name) {
        engine::CKalvexDoc& document =
            *m_documents.emplace_back(std::make_unique<engine::CKalvexDoc>(m_world.services));
        std::string error;
        if (!document.Open(name, error)) Fail(error);
        m_ticker.Add(document);
        return document;
    }

    void SetBudget() { m_ticker.SetBudget(platform::SteadyMicroseconds, kBudget); }

    void RunTick() {
        m_ticker.RunTick();
        m_world.clock.Advance(1);
    }

    std::uint64_t Lines() const { return m_counts.lines; }

  private:
    ScriptServices m_world;
    engine::RunCounts m_counts;
    vantrel::SimulatedPlant m_plant{{}, m_world.clock};
    sources::CClientInterface m_client{{m_world.log, m_world.translator, m_world.users, m_plant}};
    std::vector<std::unique_ptr<engine::CKalvexDoc>> m_documents;
    engine::TickRunner m_ticker;
};

struct Script {
    engine::CKalvexDoc* document;
    const Group* group;
    int startedAt;  // the tick
};

std::int64_t Counted(const Script& script) {
    operands::CVariable* variable = script.document->Variables().Find("N");
    value::CVal value;
    if (variable == nullptr || variable->GetValue(value, value::KindCurrent, 1) == 0) return -1;
    return value::ValueToInt(value);
}

// How often the loop's SET has run in so many due steps, of which `before` come ahead of the loop.
std::int64_t TurnsIn(std::int64_t steps, int before) {
    return steps <= before ? 0 : (steps - before + 1) / 2;
}

void Check(const Script& script, int ticks, const char* name) {
    const Group& group = *script.group;
    const int line = script.document->State().m_nCurrentLine;
    if (script.document->State().m_bErrorStanding) Fail(fmt::format("{}: an error", name));
    if (group.line >= 0 && line != group.line) Fail(fmt::format("{}: on line {}", name, line));
    if (!group.counts) return;
    const std::int64_t lived = ticks - script.startedAt;
    // The tick of PRIORITY goes on at the top speed.
    const bool top = group.stepsEach > 0;
    const std::int64_t steps = top ? 1 + group.stepsEach * (lived - 50) : (lived + 49) / 50;
    const std::int64_t wanted = TurnsIn(steps, top ? 3 : 2);
    if (group.turns && Counted(script) > 0 && Counted(script) <= wanted) return;
    if (Counted(script) != wanted)
        Fail(fmt::format("{}: {} turns instead of {}", name, Counted(script), wanted));
}

// Of this thread, in microseconds.
double ProcessorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

double Percentile(const std::vector<double>& sorted, double share) {
    return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
}

void Run(const Scenario& scenario) {
    World world;
    if (scenario.budget) world.SetBudget();
    std::vector<Script> scripts;
    for (const Group& group : scenario.groups) {
        const std::string name = fmt::format("{}.kx", &group - scenario.groups.data());
        world.Write(name, group.text);
        for (int i = 0; i < group.count; ++i) {
            engine::CKalvexDoc& document = world.Open(name);
            document.SetMinimised(group.minimised);
            scripts.push_back({&document, &group, group.spread ? i % 50 : 0});
        }
    }
    std::vector<double> took;
    std::vector<double> worked;
    const int all = kWarmTicks + scenario.ticks;
    for (int tick = 0; tick < all; ++tick) {
        for (const Script& script : scripts) {
            if (tick < 50 && script.startedAt == tick && !script.document->Start()) Fail("start");
        }
        const double work = ProcessorTime();
        const auto begin = std::chrono::steady_clock::now();
        world.RunTick();
        const std::chrono::duration<double, std::micro> time =
            std::chrono::steady_clock::now() - begin;
        if (tick < kWarmTicks) continue;
        took.push_back(time.count());
        worked.push_back(ProcessorTime() - work);
    }
    for (const Script& script : scripts) Check(script, all, scenario.name);
    std::ranges::sort(took);
    std::ranges::sort(worked);
    fmt::print("{:<52} {:9.1f} {:9.1f} {:9.1f} {:9.1f}   {}\n", scenario.name,
               Percentile(took, 0.5), Percentile(took, 0.99), took.back(), Percentile(worked, 0.99),
               world.Lines());
    std::fflush(stdout);
}

const Scenario kScenarios[] = {
    {"10000 finished", {{10000, "LOCAL A = 1", 1}}, 2000},
    {"10000 asleep at PRIORITY 50", {{10000, "SLEEP 1:00.00\nLOCAL A", 0}}, 2000},
    {"10000 asleep at PRIORITY 1", {{10000, "PRIORITY 1\nSLEEP 1:00.00", 1, false, 10}}, 2000},
    {"10000 asleep at PRIORITY 1, minimised",
     {{10000, "PRIORITY 1\nSLEEP 1:00.00", 1, true, 20}},
     2000},
    {"10000 at WAITFOR, PRIORITY 1", {{10000, "PRIORITY 1\nWAITFOR 23:00.00", 1, false, 10}}, 2000},
    {"10000 waiting for data, PRIORITY 1",
     {{10000, "PRIORITY 1\nREMOTE R srv@V\nLOCAL A = R + 1", 2, false, 10}},
     2000},
    {"10000 running at PRIORITY 50, started at once", {{10000, kLoop, -1, false, 0, true}}, 2000},
    {"10000 running at PRIORITY 50, started tick by tick",
     {{10000, kLoop, -1, false, 0, true, true}},
     2000},
    {"200 running at PRIORITY 1, minimised", {{200, kTopLoop, -1, true, 20, true}}, 2000},
    {"500 running at PRIORITY 50 and 300 at PRIORITY 1",
     {{500, kLoop, -1, false, 0, true}, {300, kTopLoop, -1, false, 10, true}},
     2000},
    {"500 at PRIORITY 50, 5000 at PRIORITY 1",
     {{500, kLoop, -1, false, 0, true}, {5000, kTopLoop, -1, false, 10, true}},
     1000},
    {"500 at PRIORITY 50, 5000 at PRIORITY 1, with a budget",
     {{500, kLoop, -1, false, 0, true}, {5000, kTopLoop, -1, false, 10, true, false, true}},
     1000,
     true},
};

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    const std::string_view wanted = argc > 1 ? argv[1] : "";
    fmt::print("{:<52} {:>9} {:>9} {:>9} {:>9}   lines\n", "one tick, us", "p50", "p99", "longest",
               "p99 work");
    for (const auto& scenario : kalvex::bench::kScenarios) {
        if (std::string_view(scenario.name).find(wanted) != std::string_view::npos)
            kalvex::bench::Run(scenario);
    }
    return EXIT_SUCCESS;
}
