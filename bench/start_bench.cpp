// The start of a script, and the memory that it takes: of its text, of what the start prepares, and
// of what the lines keep once they have run. Documents are made as the service makes them. The
// program fails when a script does not run, does not compute what it should, or takes more memory
// than the limits below.
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "checked_rows.h"
#include "engine/ScriptDocument.h"
#include "script_services.h"
#include "value/ValueText.h"
#include "workbench/model/DocumentModel.h"

namespace kalvex::bench {
namespace {

constexpr int kShortScript = 50;
constexpr int kLongScript = 100000;
constexpr double kShortLimit = 20e3;  // bytes
constexpr double kLongLimit = 40e6;

void Expect(bool holds, const std::string& what) {
    if (!holds) Wrong(what);
}

struct Script {
    std::unique_ptr<workbench::DocumentModel> model;
    std::unique_ptr<engine::CKalvexDoc> document;
};

class World {
  public:
    void Write(const std::string& text) { m_world.folder.Put("a.kx", text); }

    Script OpenAndStart() {
        auto text = std::make_unique<workbench::EditedText>();
        Script script{std::make_unique<workbench::DocumentModel>(), nullptr};
        script.model->SetText(*text);
        script.document = std::make_unique<engine::CKalvexDoc>(m_world.services, std::move(text));
        script.document->SetView(script.model.get());
        script.document->SetMinimised(true);
        std::string error;
        Expect(script.document->Open("a.kx", error), error);
        Expect(script.document->Start(), "the start is refused");
        return script;
    }

  private:
    ScriptServices m_world;
};

// A loop that runs twice: of its lines each is of another kind than the one above.
std::string TwoRounds(int lines) {
    constexpr const char* kBody[] = {
        "SET M = N * 1.01 + 1 - N * 0.01",
        "; a comment on what follows",
        "IF M > 1000 THEN",
        "  STRING_APPEND T \"abc\"",
        "ENDIF",
    };
    std::string text = "LOCAL N = 0\nLOCAL M = 0\nLOCAL T = \"x\"\n:w\n";
    for (int i = 4; i < lines - 2; ++i) {
        const int kind = (i - 4) % 5;
        const bool cut = kind >= 2 && i - kind + 4 >= lines - 2;  // no room for the whole block
        text += kBody[cut ? 1 : kind];
        text += '\n';
    }
    return text + "SET N = N + 1\nIF N < 2 GOTO w";
}

void RunToItsEnd(engine::CKalvexDoc& document) {
    document.SetPriority(1);
    const int count = document.GetLineCount();
    for (int left = 3 * count; left > 0 && document.State().m_nCurrentLine < count; --left)
        document.ExecuteStep();
    const operands::CVariable* counted = document.Variables().Find("N");
    Expect(counted != nullptr, "the script has no N");
    if (counted == nullptr) return;
    value::CVal rounds;
    document.Variables().Find("N")->GetValue(rounds, value::KindCurrent, 1);
    Expect(value::ValueToDouble(rounds) == 2, "the script has not run twice");
}

// From the file to the first line, and the end of the document.
void Start(benchmark::State& state) {
    World world;
    const int lines = static_cast<int>(state.range(0));
    world.Write(TwoRounds(lines));
    for (auto _ : state) {
        const Script script = world.OpenAndStart();
        Expect(script.document->GetLineCount() == lines, "the script has other lines");
    }
    state.SetItemsProcessed(state.iterations() * lines);
}
BENCHMARK(Start)->Arg(10)->Arg(1000)->Arg(kLongScript)->Unit(benchmark::kMicrosecond);

// What the first IF of a script costs: the search for all blocks.
void Blocks(benchmark::State& state, const std::string& text, int wantedError) {
    engine::LineList list;
    list.SetText(text);
    engine::LineCache lines;
    lines.Fill(list);
    int error = -1;
    for (auto _ : state) {
        engine::IfBlockIndex blocks;
        error = blocks.BlockAt(lines, 0).nError;
    }
    Expect(error == wantedError, "the first block is another one");
    state.SetItemsProcessed(state.iterations() * lines.Count());
}

std::string Repeated(std::string_view lines, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += lines;
    return text;
}

void BlocksInARow(benchmark::State& state) {
    constexpr const char* kBlock = "IF N < 5 THEN\nSET M = N + 1\nELSE\nENDIF\n";
    Blocks(state, Repeated(kBlock, kLongScript / 4), operands::ErrorNone);
}
BENCHMARK(BlocksInARow)->Unit(benchmark::kMicrosecond);

void BlocksInEachOther(benchmark::State& state) {
    const int half = kLongScript / 2;
    Blocks(state, Repeated("IF N < 5 THEN\n", half) + Repeated("ENDIF\n", half),
           operands::ErrorNone);
}
BENCHMARK(BlocksInEachOther)->Unit(benchmark::kMicrosecond);

void BlocksWithoutEnd(benchmark::State& state) {
    Blocks(state, Repeated("IF N < 5 THEN\n", kLongScript), operands::ErrorNoEndif);
}
BENCHMARK(BlocksWithoutEnd)->Unit(benchmark::kMicrosecond);

double HeapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

// Bytes of the heap that one of so many scripts takes.
void Memory(benchmark::State& state) {
    World world;
    const int lines = static_cast<int>(state.range(0));
    const int count = lines == kShortScript ? 1000 : 1;
    world.Write(TwoRounds(lines));
    double started = 0;
    double run = 0;
    for (auto _ : state) {
        std::vector<Script> scripts;
        scripts.reserve(static_cast<std::size_t>(count));
        const double before = HeapInUse();
        for (int i = 0; i < count; ++i) scripts.push_back(world.OpenAndStart());
        started = (HeapInUse() - before) / count;
        for (const Script& script : scripts) RunToItsEnd(*script.document);
        run = (HeapInUse() - before) / count;
    }
    Expect(run < (lines == kShortScript ? kShortLimit : kLongLimit), "a script takes too much");
    state.counters["started"] = started;
    state.counters["run"] = run;
}
BENCHMARK(Memory)->Arg(kShortScript)->Arg(kLongScript)->Iterations(1);

}  // namespace
}  // namespace kalvex::bench

int main(int argc, char** argv) {
    return kalvex::bench::RunRows(argc, argv);
}
