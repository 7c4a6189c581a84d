#include "differential/World.h"

#include <algorithm>
#include <stdexcept>

#include "support/scratch_file.h"
#include "value/ValueText.h"

namespace kalvex::differential {

namespace {

// ' stands for ". Z1 changes often, Z2 is lost and found, the second server is slow and goes away.
constexpr const char* kPlant = R"({'sources': {
'srv': {'latencyTicks': 2,
  'variables': {
    'Z1': {'attributes': {},
      'current': [{'value': 1, 'status': 16}, {'atTick': 5, 'value': 2.5}, {'atTick': 9, 'value': 3},
        {'atTick': 20, 'value': -4}, {'atTick': 40, 'value': 'tekst'}, {'atTick': 60, 'value': 7},
        {'atTick': 61, 'value': 8}, {'atTick': 62, 'value': 9}, {'atTick': 100, 'value': 10}],
      'hour': [{'time': '2024-03-10 06:00:00', 'value': 61, 'status': 128},
        {'time': '2024-03-10 07:00:00', 'value': 71},
        {'time': '2024-03-10 05:00:00', 'value': 51, 'status': 1}],
      'day': [{'time': '2024-03-10 00:00:00', 'value': 1000},
        {'time': '2024-03-09 00:00:00', 'value': 'brak'}],
      'month': [{'time': '2024-03-01 00:00:00', 'value': 30000}],
      'archive': [{'time': '2024-03-10 06:00:00', 'value': 1}, {'time': '2024-03-10 06:10:00',
        'value': 2}, {'time': '2024-03-10 06:20:00', 'value': 3, 'status': 1}]},
    'Z2': {'current': [{'value': 5, 'status': 1}, {'atTick': 10, 'value': 6},
        {'atTick': 30, 'value': 6, 'status': 1}, {'atTick': 50, 'value': 12, 'status': 4},
        {'atTick': 150, 'value': null}, {'atTick': 170, 'value': 1.25, 'status': 32}]},
    'OPIS': {'current': [{'value': '12 szt'}, {'atTick': 25, 'value': 'ABC def'}]},
    'NIEMY': {},
    'Z 3.A': {'current': [{'value': 33}], 'writeError': 9},
    'ZAKAZ': {'accessError': 7, 'current': [{'value': 1}]}},
  'outages': [{'fromTick': 80, 'toTick': 90}, {'fromTick': 180, 'toTick': 200, 'reason': 3}],
  'reportChanges': [{'atTick': 15, 'kind': 'HREP', 'time': 1710050400},
    {'atTick': 35, 'kind': 'HREP', 'time': 1710054000}, {'atTick': 36, 'kind': 'DREP',
    'time': 1710025200}, {'atTick': 70, 'kind': 'HREP', 'time': 1710050400}]},
'dwa': {'connectAtTick': 12, 'dataAtTick': 18, 'latencyTicks': 5,
  'variables': {'Z1': {'current': [{'value': 100}, {'atTick': 33, 'value': 200}]}},
  'outages': [{'fromTick': 120, 'toTick': 140}]}}})";

const vantrel::PlantDefinition& Plant() {
    static const vantrel::PlantDefinition plant = [] {
        std::string text = kPlant;
        std::ranges::replace(text, '\'', '"');
        const support::ScratchFile file(text);
        vantrel::PlantDefinition definition;
        std::string fault;
        if (!vantrel::ReadPlant(file.Path(), definition, fault)) throw std::runtime_error(fault);
        return definition;
    }();
    return plant;
}

int Round(int number, int count) {
    return count <= 0 ? 0 : std::abs(number) % count;
}

}  // namespace

World::World(const support::ScratchFolder& folder, const Scenario& scenario, Way way,
             const Tables& tables)
    : m_paths(folder.Path()),
      m_services{{clock, log, m_translator, m_users, m_paths, tables.functions},
                 tables.statements,
                 m_questions} {
    m_users.name = "JAN";
    m_users.description = "operator zmiany";
    m_users.account = "operator";
    m_services.keepForms = way == Way::KeepForms;
    m_services.counts = &counts;
    if (scenario.published) m_services.console = &console;
    if (scenario.sources) {
        m_plant = std::make_unique<vantrel::SimulatedPlant>(Plant(), clock);
        client = std::make_unique<sources::CClientInterface>(
            sources::SourceServices{log, m_translator, m_users, *m_plant, &journal});
        m_services.sources = client.get();
    }
    views.resize(scenario.scripts.size());
    for (std::size_t i = 0; i < scenario.scripts.size(); ++i) {
        engine::CKalvexDoc& document =
            *documents.emplace_back(std::make_unique<engine::CKalvexDoc>(m_services));
        std::string error;
        if (!document.Open(FileName(i), error)) throw std::runtime_error(error);
        if (scenario.watched) document.SetView(&views[i]);
        document.SendLineReports(scenario.published);
        ticks.Add(document);
    }
}

World::~World() {
    documents.clear();
    client.reset();  // whose connections the plant outlives
}

void World::StartScripts() {
    for (const auto& document : documents) document->Start();
}

void World::BeginTick(std::int64_t milliseconds) {
    if (milliseconds < 0) {
        clock.SetSystemTime(clock.Now() + milliseconds / 1000);
    } else {
        clock.Advance(milliseconds);
    }
    if (!m_plant) return;
    journal.SetTick(++m_tick);
    m_plant->AdvanceTo(m_tick);
}

void World::EditText(engine::CKalvexDoc& document, const Event& event) {
    engine::ScriptText& text = document.Text();
    text.InsertScriptText(Round(event.number, text.GetLineCount()), event.text + "\r\n",
                          event.kind == EventKind::EditLine);
}

void World::SetValue(engine::CKalvexDoc& document, const Event& event) const {
    const operands::VariableTable& variables = document.Variables();
    if (variables.GetSize() == 0) return;
    operands::CVariable& variable =
        **(variables.begin() + Round(event.number, static_cast<int>(variables.GetSize())));
    value::CVal value;
    variable.GetValue(value, value::KindCurrent, operands::kAsStored);
    value::ApplyOperatorText(value, event.text);
    variable.SetValue(value, value::KindCurrent);
    document.OnValueSet();
}

void World::Apply(const Event& event) {
    const std::size_t number = static_cast<std::size_t>(event.script) % documents.size();
    engine::CKalvexDoc& document = *documents[number];
    std::set<int>& breakpoints = views[number].breakpoints;
    const int line = Round(event.number, document.GetLineCount());
    switch (event.kind) {
        case EventKind::Start:
            document.Start();
            break;
        case EventKind::Stop:
            document.Stop();
            break;
        case EventKind::Step:
            document.Step();
            break;
        case EventKind::Reset:
            document.Reset();
            break;
        case EventKind::Minimise:
            document.SetMinimised(!document.State().m_bMinimised);
            break;
        case EventKind::Breakpoint:
            if (breakpoints.erase(line) == 0) breakpoints.insert(line);
            break;
        case EventKind::SetValue:
            SetValue(document, event);
            break;
        case EventKind::EditLine:
        case EventKind::InsertLine:
            EditText(document, event);
            break;
        case EventKind::Jump:
            document.JumpTo(line);
            break;
        case EventKind::ChangeFile:  // done once for both worlds
        case EventKind::IdleTicks:   // asks both worlds
        case EventKind::Count:
            break;
    }
}

}  // namespace kalvex::differential
