// What a module makes of the texts that a console writes, and a console of those that a module
// sends: each gets what it never would from the other side, and what the module sends goes to the
// console, too. An input is a line of steps, in the form of fields.
#include <algorithm>
#include <array>

#include "console/ClientConsole.h"
#include "console/ModuleConsole.h"
#include "fuzz/WireFields.h"
#include "fuzz/fuzz.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "support/fixed_user.h"
#include "support/in_process.h"
#include "support/log_recorder.h"
#include "support/scratch_folder.h"

namespace kalvex::fuzz {

namespace {

constexpr const char* kPath = "a.kx";
constexpr const char* kScript = "LOCAL X = 5\r\nLIST L\r\nREMOTE R srv@V\r\nSET X = X + 1\r\n";
constexpr const char* kModule = "Kalvex_stacja";
constexpr const char* kConsole = "A_RC";
constexpr std::uint16_t kMostStatus = 4;

// What a step does with its text.
enum Step : std::uint64_t {
    ToModule = 1,  // written by a console: to the three variables of the script,
    ToModuleList,
    ToModuleLine,
    ToModuleInfo,  // and to the one that tells of scripts
    ToConsole,     // sent by a module, likewise
    ToConsoleList,
    ToConsoleLine,
    ToConsoleInfo,
    Ask,  // the person at the console does something
    Edit,
    Tick,
};

std::uint64_t TagOf(Step step) {
    return (step << 3) | 2;
}

// Who answers any question with yes, then with no.
class Answers final : public platform::Questions {
  public:
    bool AskYesNo(std::string_view) override { return m_yes = !m_yes; }

  private:
    bool m_yes = false;
};

// One side; of all scripts only one has a file. `Host` is a console::ScriptHost of more.
template <class Host>
class Side : public Host {
  protected:
    explicit Side(const engine::DocumentServices& services) : m_services(services) {}
    ~Side() override = default;

    engine::CKalvexDoc* FindScript(std::string_view path) final {
        return m_open && path == kPath ? m_open.get() : nullptr;
    }
    engine::CKalvexDoc* OpenScript(std::string_view path) final {
        std::string error;
        if (path != kPath) return nullptr;
        m_open = std::make_unique<engine::CKalvexDoc>(m_services);
        Demand(m_open->Open(path, error), "the script must open");
        m_model = {};
        m_open->SetView(&m_model);
        return m_open.get();
    }
    void CloseScript(engine::CKalvexDoc&) final { Close(); }
    std::vector<engine::CKalvexDoc*> Scripts() final {
        if (!m_open) return {};
        return {m_open.get()};
    }
    workbench::DocumentModel& ModelOf(const engine::CKalvexDoc&) final { return m_model; }

    void Close() { m_open.reset(); }
    workbench::DocumentModel& Model() { return m_model; }

    engine::DocumentServices m_services;

  private:
    workbench::DocumentModel m_model;
    std::unique_ptr<engine::CKalvexDoc> m_open;
};

struct World {
    void Begin() { folder.Put(kPath, kScript); }

    engine::DocumentServices Services() {
        return {{clock, log, translator, users, paths, language::Functions()},
                language::Statements(),
                answers};
    }

    support::ScratchFolder folder;
    platform::VirtualClock clock{1710068400};
    support::SilentLog log;
    platform::Translator translator;
    support::FixedUser users;
    platform::Paths paths{folder.Path()};
    Answers answers;
    platform::PostedWork loop;
};

class Console final : private Side<console::ClientHost> {
  public:
    explicit Console(World& world)
        : Side(world.Services()),
          m_sources(sources::SourceServices{world.log, world.translator, world.users, m_none}),
          m_console({world.log, world.translator, world.answers, world.loop, m_sources, *this,
                     "Kalvex"}) {
        m_services.sources = &m_sources;
        m_services.console = &m_console;
        m_services.consoleClient = true;
        m_console.OnControlValue(console::kDocumentInfoVariable, value::CVal(kPath));
    }
    ~Console() override { Close(); }

    void Hear(std::string_view variable, const value::CVal& value) {
        m_console.OnControlValue(variable, value);
    }
    void Ask() {
        engine::CKalvexDoc* document = FindScript(kPath);
        if (document == nullptr) return;
        if (!document->State().m_bControlAllowed) m_asked = true;
        m_console.AskForSession(*document);
    }
    void Edit(std::string_view text) {
        engine::CKalvexDoc* document = FindScript(kPath);
        if (document == nullptr || document->IsReadOnly()) return;
        document->Text().SetText(text);
        document->SetModified(true);
    }

    void Check() {
        engine::CKalvexDoc* document = FindScript(kPath);
        if (document == nullptr) return;
        const engine::RunState& state = document->State();
        Demand(!state.m_bControlAllowed || m_asked, "a session that was not asked for");
        Demand(state.m_bControlAllowed || document->IsReadOnly(), "text that may be edited");
        Demand(state.m_nCurrentLine >= 0, "no line");
        Demand(document->Variables().begin() == document->Variables().end(),
               "a console interprets nothing");
        for (const int line : Model().Markers().LinesOf(workbench::MarkerBreakpoint)) {
            Demand(line >= 0, "a breakpoint on no line");
        }
    }

  private:
    void MinimiseFrame(engine::CKalvexDoc& document) override { document.SetMinimised(false); }
    void ShowVariables(engine::CKalvexDoc&, int row) override {
        const workbench::VariableRows& rows = Model().Variables();
        Demand(row < static_cast<int>(rows.GetCount()), "no such row");
        if (row >= 0) rows.CellsOf(static_cast<std::size_t>(row));
    }
    void ShowMessage(std::string_view) override {}
    void UpdateTitle() override {}
    void ClearLog() override {}
    void LogFromModule(std::string_view, std::int64_t, int) override {}
    void TakeLogLevel(int) override {}
    const std::string& GetClientIdentity() const override { return m_identity; }

    const std::string m_identity = kConsole;
    support::NoTransports m_none;
    sources::CClientInterface m_sources;
    console::ClientConsole m_console;
    bool m_asked = false;
};

class Module final : private Side<console::ConsoleHost>, private console::ValueDistribution {
  public:
    Module(World& world, Console& listener)
        : Side(world.Services()), m_listener(listener), m_console(*this) {
        m_services.console = &m_console;
        m_console.SetDistribution(this);
        m_console.OnOpened(*OpenScript(kPath), false);
    }
    ~Module() override {
        m_console.SetDistribution(nullptr);
        Close();
    }

    void Hear(std::string_view variable, const value::CVal& value) {
        if (console::CVarRCCtrl* written = m_console.Variables().FindControlVariable(variable)) {
            written->SetValue(value);
        }
    }
    void Tick() {
        for (engine::CKalvexDoc* document : Scripts()) document->ExecuteStep();
    }
    void Check() {
        for (const engine::CKalvexDoc* document : Scripts()) {
            const engine::RunState& state = document->State();
            Demand(state.m_bControlAllowed || document->IsReadOnly(), "two may edit");
            Demand(!state.m_bRunning || !state.m_bPaused, "it runs and stands");
            Demand(state.m_nCurrentLine >= 0, "no line");
        }
    }

  private:
    void SetLogLevel(int level) override { m_console.PublishLevel(level); }
    const std::string& GetClientIdentity() const override { return m_identity; }

    void AddCurrentValueChange(const console::CVarRCCtrl& variable) override {
        m_listener.Hear(variable.GetName(), variable.Value());
    }
    void OnVariables(std::string_view) override {}

    const std::string m_identity = kModule;
    Console& m_listener;
    console::ModuleConsole m_console;
};

// The names in the order of the steps.
std::string VariableOf(std::uint64_t index) {
    static const std::array<std::string, 4> names = {
        kPath, std::string(console::kListPrefix) + kPath, std::string(console::kLinePrefix) + kPath,
        std::string(console::kDocumentInfoVariable)};
    return names.at(index);
}

// A text, but on the line variable; one whose first byte is small has it as its status.
value::CVal ValueOf(std::string_view text, bool isLine) {
    value::CVal value(text);
    if (isLine) value = value::CVal(static_cast<int>(text.size()) - 3);
    if (!text.empty() && static_cast<unsigned char>(text.front()) < kMostStatus) {
        value.SetStatus(static_cast<std::uint16_t>(text.front()));
    }
    return value;
}

void Do(const WireField& step, Module& module, Console& console) {
    const std::uint64_t number = step.tag >> 3;
    if (number >= ToModule && number <= ToModuleInfo) {
        module.Hear(VariableOf(number - ToModule), ValueOf(step.content, number == ToModuleLine));
    } else if (number >= ToConsole && number <= ToConsoleInfo) {
        console.Hear(VariableOf(number - ToConsole),
                     ValueOf(step.content, number == ToConsoleLine));
    } else if (number == Ask) {
        console.Ask();
    } else if (number == Edit) {
        console.Edit(step.content);
    } else {
        module.Tick();
    }
}

}  // namespace

std::vector<std::string> FuzzCorpus() {
    const std::vector<WireField> steps = {
        {TagOf(ToModule), "0\tA_RC\t0"},
        {TagOf(ToModule), "1\tA_RC\tKalvex_stacja"},
        {TagOf(ToModule), "2"},
        {TagOf(ToModule), "4"},
        {TagOf(ToModule), "8"},
        {TagOf(Tick), ""},
        {TagOf(ToModule), "6"},
        {TagOf(ToModule), "10\t2"},
        {TagOf(ToModule), "12\t2"},
        {TagOf(ToModule), "15"},
        {TagOf(ToModule), "21\tA_RC\tB_RC"},
        {TagOf(ToModuleList), "17\tX\t12.5\t171\t32"},
        {TagOf(ToModuleList), "18\tX"},
        {TagOf(ToModuleList), "20"},
        {TagOf(ToModuleLine), "--"},
        {TagOf(ToModuleInfo), "~a.kx"},
        {TagOf(ToModuleInfo), "a.kx"},
        {TagOf(Ask), ""},
        {TagOf(ToConsole), "1\tKalvex_stacja\tA_RC\t2\t1\t3;17;"},
        {TagOf(Edit), "LOCAL Z\r\n"},
        {TagOf(ToConsole), "0\t1\t0"},
        {TagOf(ToConsole), "0\tB_RC\t1"},
        {TagOf(ToConsole), "21\tB_RC\tA_RC"},
        {TagOf(ToConsole), "3\t1\t0"},
        {TagOf(ToConsole), "1\tB\tA_RC\t-1\t-1\t-3;-17;"},
        {TagOf(ToConsole), "3\t-1\t-7"},
        {TagOf(ToConsole), "5\t2\t1"},
        {TagOf(ToConsole), "9\t2\t2"},
        {TagOf(ToConsole), "16\t2\t2"},
        {TagOf(ToConsole), "7"},
        {TagOf(ToConsole), "11\t2"},
        {TagOf(ToConsole), "13\t2"},
        {TagOf(ToConsole), "14"},
        {TagOf(ToConsoleList), "19\tX\t;1970-01-01 01:00:00 ( 0 ) 5.00;;;;;"},
        {TagOf(ToConsoleLine), "-----"},
        {TagOf(ToConsoleInfo), "~a.kx"},
        {TagOf(ToConsoleInfo), "a.kx"},
    };
    std::vector<std::string> corpus{"", JoinFields(steps)};
    for (const WireField& step : steps) corpus.push_back(JoinFields({step}));
    return corpus;
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kalvex::fuzz::World world;
    world.Begin();
    kalvex::fuzz::Console console(world);
    kalvex::fuzz::Module module(world, console);
    std::vector<kalvex::fuzz::WireField> steps;
    kalvex::fuzz::SplitFields(kalvex::fuzz::Bytes(data, size), steps);
    for (const kalvex::fuzz::WireField& step : steps) {
        kalvex::fuzz::Do(step, module, console);
        world.loop.Run();
        module.Check();
        console.Check();
    }
    return 0;
}
