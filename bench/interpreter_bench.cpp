// The interpreter: lines by kind, variables looked up among many, ticks over scripts that have
// nothing to do. Every row counts lines (or scripts a tick) as its items and compares what its
// script computed with what so many lines must give; the program fails when one differs.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "checked_rows.h"
#include "engine/ScriptDocument.h"
#include "engine/Tick.h"
#include "script_services.h"
#include "value/ValueText.h"

namespace kalvex::bench {
namespace {

constexpr int kLinesOfRound = 4200;

class World {
  public:
    void Write(const std::string& text) { m_world.folder.Put("a.kx", text); }

    // A document of the text written last, started.
    engine::CKalvexDoc& Open() {
        engine::CKalvexDoc& document =
            *m_documents.emplace_back(std::make_unique<engine::CKalvexDoc>(m_world.services));
        std::string error;
        if (!document.Open("a.kx", error)) Expect(0, 1, error);
        if (!document.Start()) Expect(0, 1, "start");
        m_ticker.Add(document);
        return document;
    }

    void RunTick() { m_ticker.RunTick(); }

  private:
    ScriptServices m_world;
    std::vector<std::unique_ptr<engine::CKalvexDoc>> m_documents;
    engine::TickRunner m_ticker;
};

void RunLines(engine::CKalvexDoc& document, int lines) {
    document.SetPriority(1);
    for (int i = 0; i < lines; ++i) document.ExecuteStep();
}

value::CVal Value(engine::CKalvexDoc& document, std::string_view name) {
    value::CVal value;
    const operands::CVariable* variable = document.Variables().Find(name);
    Expect(variable != nullptr, 1, std::string(name));
    if (variable != nullptr)
        document.Variables().Find(name)->GetValue(value, value::KindCurrent, 1);
    return value;
}

// The script's `before` lines once, then whole rounds of its loop, whose lines divide a round. What
// the loop counts in N must be `counts` a turn.
void RunLoop(benchmark::State& state, const std::string& text, int before, int loop, int counts,
             const std::string& row) {
    World world;
    world.Write(text);
    engine::CKalvexDoc& document = world.Open();
    RunLines(document, before);
    std::int64_t rounds = 0;
    for (auto _ : state) {
        RunLines(document, kLinesOfRound);
        ++rounds;
    }
    Expect(document.State().m_bErrorStanding, 0, row);
    const std::int64_t turns = rounds * (kLinesOfRound / loop);
    Expect(value::ValueToDouble(Value(document, "N")), static_cast<double>(turns * counts), row);
    state.SetItemsProcessed(rounds * kLinesOfRound);
    state.SetLabel(row);
}

void CountingLoop(benchmark::State& state) {
    RunLoop(state,
            "LOCAL N = 0\nLOCAL M = 0\n:w\n"
            "SET M = N\nSET N = M + 1\nIF N < 1000000000 GOTO w\n",
            3, 3, 1, "SET, SET with a formula, IF GOTO");
}
BENCHMARK(CountingLoop);

struct Line {
    const char* text;
    int counts;  // what it adds to N
};

constexpr Line kLines[] = {
    {"SET M = N", 0},       {"SET M = 12.5", 0},
    {"SET N = N + 1", 1},   {"SET M = (N * 1.8 + 32) / 4 - 7", 0},
    {"IF N < 0 GOTO w", 0}, {"IF N < 0 | M < 0 GOTO w", 0},
    {"; a comment", 0},
};

// Nine lines of one kind and the GOTO back.
void SingleLine(benchmark::State& state) {
    const Line& line = kLines[state.range(0)];
    std::string text = "LOCAL N = 0\nLOCAL M = 0\n:w\n";
    for (int i = 0; i < 9; ++i) text += std::string(line.text) + '\n';
    RunLoop(state, text + "GOTO w\n", 3, 10, 9 * line.counts, line.text);
}
BENCHMARK(SingleLine)->DenseRange(0, std::size(kLines) - 1);

// The lines that a jump to a label passes over on its way from the top of the text.
void JumpFarDown(benchmark::State& state) {
    std::string text = "LOCAL N = 0\nGOTO w\n";
    for (int i = 0; i < state.range(0); ++i) text += "SET N = -1\n";
    RunLoop(state, text + ":w\nSET N = N + 1\nGOTO w\n", 2, 2, 1, "SET, GOTO");
}
BENCHMARK(JumpFarDown)->Arg(10)->Arg(1000)->Arg(10000);

// A loop on the last of so many variables, N, at the top of the text, where its label is near.
void Lookup(benchmark::State& state) {
    const int variables = static_cast<int>(state.range(0));
    std::string text = "GOTO deklaracje\n:w\nSET N = N + 1\nGOTO w\n:deklaracje\n";
    for (int i = 1; i < variables; ++i) text += "LOCAL ZMIENNA_" + std::to_string(i) + " = 1\n";
    RunLoop(state, text + "LOCAL N = 0\nGOTO w\n", variables + 2, 2, 1, "SET with a formula, GOTO");
}
BENCHMARK(Lookup)->Arg(10)->Arg(1000)->Arg(10000);

void StringLoop(benchmark::State& state) {
    RunLoop(state,
            "LOCAL N = 0\nLOCAL NAZWA = \"stacja pomp Z1\"\nLOCAL S\n:w\n"
            "SET S = STRING_LEFT NAZWA 6\n"
            "SET S = STRING_APPEND S \" Z2\"\n"
            "SET S = STRING_MAKE_UPPER S\n"
            "IF S == \"STACJA Z2\" THEN\n"
            "SET N = N + 1\n"
            "ENDIF\n"
            "GOTO w\n",
            4, 7, 1, "STRING_LEFT, _APPEND, _MAKE_UPPER, IF THEN, SET, ENDIF, GOTO");
}
BENCHMARK(StringLoop);

struct Idleness {
    const char* name;
    const char* text;
    int line;  // where such a script stands
};

constexpr Idleness kIdle[] = {
    {"finished", "LOCAL A = 1", 1},
    {"sleeping", "PRIORITY 1\nSLEEP 1:00.00\nLOCAL A = 1", 1},
    {"sleeping at priority 50", "SLEEP 1:00.00\nLOCAL A = 1", 0},
};

// A tick over so many scripts that have nothing to do; the items are scripts.
void IdleScripts(benchmark::State& state) {
    const Idleness& idleness = kIdle[state.range(0)];
    const auto count = static_cast<std::size_t>(state.range(1));
    World world;
    world.Write(idleness.text);
    std::vector<engine::CKalvexDoc*> documents;
    for (std::size_t i = 0; i < count; ++i) documents.push_back(&world.Open());
    world.RunTick();
    for (auto _ : state) world.RunTick();
    std::size_t idle = 0;
    for (const engine::CKalvexDoc* document : documents) {
        idle += document->State().m_nCurrentLine == idleness.line &&
                !document->State().m_bErrorStanding;
    }
    Expect(static_cast<double>(idle), static_cast<double>(count), idleness.name);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
    state.SetLabel(idleness.name);
}
BENCHMARK(IdleScripts)
    ->ArgsProduct({benchmark::CreateDenseRange(0, std::size(kIdle) - 1, 1), {1, 100, 10000}});

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    return kalvex::bench::RunRows(argc, argv);
}
