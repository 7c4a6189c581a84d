#include "differential/Generator.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "differential/Grammar.h"
#include "differential/Vocabulary.h"
#include "text/CodePage.h"

namespace kalvex::differential {

namespace {

// Puts the lines of one script together.
class ScriptWriter {
  public:
    ScriptWriter(Choice& choice, bool sources, bool wild)
        : m_choice(choice),
          m_grammar(choice, ChooseNames(choice, wild), sources, wild),
          m_sources(sources) {}

    std::string Write() {
        if (m_choice.Chance(88)) Put("PRIORITY 1");
        if (m_choice.Chance(10)) PutProcedures();
        PutDeclarations();
        PutBlocks();
        if (m_choice.Chance(25)) Put(m_grammar.Expand("GOTO %b"));
        PutProcedures();
        for (std::string& line : m_late) Put(std::move(line));
        if (m_choice.Chance(50)) Put(m_grammar.Expand("GOTO %b"));
        return Joined();
    }

    Grammar& Lines() { return m_grammar; }

  private:
    using Block = void (ScriptWriter::*)();

    void Put(std::string line) { m_lines.push_back(std::move(line)); }

    // Some are declared late, where lines have failed for want of them, and some never.
    void Declare(const std::vector<std::string>& names, std::string_view word,
                 std::string_view value, int withValue) {
        for (const std::string& name : names) {
            if (m_choice.Chance(4)) continue;
            std::string line = std::string(word) + ' ' + name;
            if (m_choice.Chance(withValue)) line += m_grammar.Expand(value);
            if (m_choice.Chance(3)) line = m_grammar.Written(line);
            (m_choice.Chance(8) ? m_late : m_lines).push_back(std::move(line));
        }
    }

    void PutDeclarations() {
        const Names& names = m_grammar.GetNames();
        Declare(names.counters, "LOCAL", " = 0", 97);
        Declare(names.numbers, "LOCAL", " = %i", 80);
        Declare(names.texts, "LOCAL", " = %t", 85);
        Declare(names.times, "LOCAL", " = %d", 90);
        Declare(names.lists, "LIST", "", 0);
        Declare(names.pointers, "POINTER", "", 0);
        for (const std::string& pointer : names.pointers) {
            if (m_choice.Chance(80)) Put("SETPTR " + pointer + m_grammar.Expand(" = %q"));
        }
        for (const std::string& list : names.lists) {
            for (int count = m_choice.Between(0, 4); count > 0; --count)
                Put("ADD " + list + m_grammar.Expand(" %o"));
            if (m_choice.Chance(80)) Put("MOVE_FIRST " + list);
        }
        if (m_sources) {
            Declare(names.remotes, "REMOTE", " %m", 100);
        } else {
            Declare(names.remotes, "LOCAL", " = %i", 90);
        }
    }

    void PutBlocks() {
        static constexpr struct {
            int weight;
            Block put;
        } kBlocks[] = {{50, &ScriptWriter::PutLines},
                       {25, &ScriptWriter::PutLoop},
                       {22, &ScriptWriter::PutIf},
                       {3, &ScriptWriter::PutProcedures}};
        const int count = m_choice.Between(2, 6);
        const std::vector<std::string>& labels = m_grammar.GetNames().labels;
        for (int i = 0; i < count; ++i) {
            if (m_choice.Chance(60)) {
                Put(m_grammar.Written(':' + m_choice.Pick(labels)));
            }
            (this->*m_choice.PickWeighted(kBlocks).put)();
        }
        for (const std::string& label : labels) {
            if (m_choice.Chance(40)) Put(':' + label);
        }
    }

    void PutLines() {
        for (int count = m_choice.Between(1, 4); count > 0; --count) Put(m_grammar.Line());
    }

    void PutLoop() {
        const std::string label = "petla" + std::to_string(m_loops++);
        const std::string counter = m_choice.Pick(m_grammar.GetNames().counters);
        Put(':' + label);
        PutBody();
        Put("SET " + counter + " = " + counter + " + 1");
        Put("IF " + counter + " < " + std::to_string(m_choice.Between(2, 9)) + " GOTO " + label);
        Put("SET " + counter + " = 0");
    }

    void PutIf() {
        const char* keyword = m_choice.Chance(96) ? "IF " : "if ";
        Put(keyword + m_grammar.Condition() + (m_choice.Chance(97) ? " THEN" : " then"));
        PutBody();
        if (m_choice.Chance(45)) {
            Put(m_choice.Chance(95) ? "ELSE" : "else");
            PutBody();
        }
        if (m_choice.Chance(98)) Put(m_choice.Chance(95) ? "ENDIF" : "\tendif ; koniec");
    }

    // Lines of which some may be blocks again.
    void PutBody() {
        constexpr int kDeepest = 3;
        ++m_depth;
        for (int count = m_choice.Between(1, 4); count > 0; --count) {
            if (m_depth < kDeepest && m_choice.Chance(12)) {
                PutIf();
            } else if (m_depth < kDeepest && m_choice.Chance(5)) {
                PutLoop();
            } else {
                Put(m_grammar.Line());
            }
        }
        --m_depth;
    }

    void PutProcedures() {
        for (const std::string& name : m_grammar.GetNames().procedures) {
            if (m_choice.Chance(8)) continue;
            std::vector<std::string> parameters;
            std::string list;
            for (int count = m_choice.Between(0, 3); count > 0; --count) {
                parameters.emplace_back(m_choice.Pick(Parameters()));
                list += (list.empty() ? "" : ", ") + parameters.back();
            }
            Put((m_choice.Chance(97) ? "PROCEDURE " : "Procedure ") + name + '(' + list + ')');
            if (m_choice.Chance(5)) Put("; " + name);
            Put("BEGIN");
            // They stand in its lines more often than other names.
            std::vector<std::string> names;
            for (int i = 0; i < 3; ++i)
                names.insert(names.end(), parameters.begin(), parameters.end());
            m_grammar.AddNumbers(names);
            PutBody();
            m_grammar.ForgetNumbers(names.size());
            if (m_choice.Chance(97)) Put("END");
        }
    }

    std::string Joined() const {
        std::string text;
        for (const std::string& line : m_lines) text += line + '\n';
        if (!text.empty()) text.pop_back();
        return text;
    }

    Choice& m_choice;
    Grammar m_grammar;
    bool m_sources;
    std::vector<std::string> m_lines;
    std::vector<std::string> m_late;
    int m_loops = 0;
    int m_depth = 0;
};

struct EventWeight {
    int weight;
    EventKind kind;
};

constexpr EventWeight kEvents[] = {
    {3, EventKind::Start},      {3, EventKind::Stop},     {3, EventKind::Step},
    {2, EventKind::Reset},      {2, EventKind::Minimise}, {2, EventKind::Breakpoint},
    {5, EventKind::SetValue},   {4, EventKind::EditLine}, {3, EventKind::InsertLine},
    {1, EventKind::ChangeFile}, {4, EventKind::Jump},     {3, EventKind::IdleTicks},
};

void AddEvents(Choice& choice, Scenario& scenario, Grammar& grammar) {
    const int most = choice.Chance(40) ? 0 : choice.Chance(70) ? 6 : 40;
    for (int count = choice.Between(0, most); count > 0; --count) {
        Event event;
        event.tick = choice.Between(1, scenario.ticks);
        event.kind = choice.PickWeighted(kEvents).kind;
        event.script = choice.Between(0, 1);
        event.number = choice.Between(0, 60);
        event.text = text::FromUtf8(event.kind == EventKind::SetValue
                                        ? std::string(choice.Pick(OperatorTexts()))
                                        : grammar.Line());
        scenario.events.push_back(event);
        // What is edited while it stands is read when it starts.
        if (choice.Chance(30)) {
            event.tick += choice.Between(0, 3);
            event.kind = choice.Chance(70) ? EventKind::Start : EventKind::Reset;
            scenario.events.push_back(std::move(event));
        }
    }
    std::ranges::stable_sort(scenario.events, {}, &Event::tick);
}

std::vector<std::int64_t> TickLengths(Choice& choice) {
    static constexpr std::int64_t kLengths[] = {1,     1,     1,       10,      50,      200,
                                                1000,  1000,  30000,   60000,   1,       700,
                                                -2000, -7000, 1200000, 3600000, 86400000};
    if (choice.Chance(30)) return {1};
    if (choice.Chance(25)) return {1000};
    std::vector<std::int64_t> lengths;
    for (int count = choice.Between(2, 12); count > 0; --count)
        lengths.push_back(choice.Pick(kLengths));
    return lengths;
}

}  // namespace

Scenario MakeScenario(std::uint64_t seed, int ticks) {
    Choice choice(seed);
    Scenario scenario;
    scenario.ticks = choice.Between(ticks / 5, ticks);
    scenario.sources = choice.Chance(35);
    scenario.tickLengths = TickLengths(choice);
    scenario.patience = choice.Chance(70) ? 1 : choice.Between(2, 4);
    scenario.started = choice.Chance(90);
    scenario.stepwise = choice.Chance(15);
    scenario.watched = choice.Chance(50);
    scenario.published = choice.Chance(25);
    const int scripts = choice.Chance(12) ? 2 : 1;
    for (int i = 0; i < scripts; ++i) {
        ScriptWriter writer(choice, scenario.sources, choice.Chance(45));
        scenario.scripts.push_back(text::FromUtf8(writer.Write()));
        if (i > 0) continue;
        for (int count = choice.Between(0, 5); count > 0; --count)
            scenario.included += text::FromUtf8(writer.Lines().Line()) + '\n';
        AddEvents(choice, scenario, writer.Lines());
    }
    return scenario;
}

}  // namespace kalvex::differential
