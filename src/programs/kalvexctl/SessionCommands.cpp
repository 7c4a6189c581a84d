// Commands that need the session of a script, and those on its list variable.
#include <algorithm>
#include <csignal>
#include <iterator>
#include <utility>

#include "console/ConsoleMessages.h"
#include "console/VariableMessages.h"
#include "platform/SteadyTime.h"
#include "programs/kalvexctl/Commands.h"
#include "programs/kalvexctl/VariableRows.h"
#include "text/CodePage.h"
#include "value/ValueText.h"
#include "vantrel/Codes.h"
#include "vantrel/network/Patience.h"

namespace kalvex::kalvexctl {

namespace {

using console::MessageCode;

MaybeEnding PrintState(Call& call, const ScriptSession& session) {
    const ScriptState& state = session.GetState();
    call.output.PrintRow(
        {{Cell{text::ToUtf8(session.GetScript())}, StateCell(state.word), LineCell(state)}});
    return {};
}

MaybeEnding Send(ScriptSession& session, MessageCode code, MessageCode reply, const char* name,
                 Fault fault = Fault::NoAnswer, int count = 1) {
    return session.Command({console::CodeText(code), reply, name, fault, count});
}

MaybeEnding StartScript(Call& call, ScriptSession& session) {
    if (session.GetState().word != RunWord::Running) {
        if (MaybeEnding ending = Send(session, MessageCode::Start, MessageCode::Started, "start",
                                      Fault::NotStarted)) {
            return ending;
        }
    }
    return PrintState(call, session);
}

MaybeEnding StopScript(Call& call, ScriptSession& session) {
    const RunWord word = session.GetState().word;
    if (word == RunWord::Idle) return call.Fail(Fault::NotRunning, {session.GetScript()});
    if (word != RunWord::Stopped) {
        if (MaybeEnding ending = Send(session, MessageCode::Stop, MessageCode::Stopped, "stop")) {
            return ending;
        }
    }
    return PrintState(call, session);
}

// The first reply comes at once, the second when the line has run.
MaybeEnding StepScript(Call& call, ScriptSession& session) {
    const RunWord word = session.GetState().word;
    if (word == RunWord::Idle || word == RunWord::Running) {
        return call.Fail(Fault::NotInStepMode, {session.GetScript()});
    }
    if (MaybeEnding ending =
            Send(session, MessageCode::Step, MessageCode::Stepped, "step", Fault::NoAnswer, 2)) {
        return ending;
    }
    return PrintState(call, session);
}

MaybeEnding ResetScript(Call& call, ScriptSession& session) {
    if (session.GetState().word != RunWord::Idle) {
        if (MaybeEnding ending =
                Send(session, MessageCode::Reset, MessageCode::WasReset, "reset")) {
            return ending;
        }
    }
    return PrintState(call, session);
}

MaybeEnding ReloadScript(Call& call, ScriptSession& session) {
    if (MaybeEnding ending = Send(session, MessageCode::Reset, MessageCode::WasReset, "reload")) {
        return ending;
    }
    return StartScript(call, session);
}

MaybeEnding SetBreakpoint(Call& call, ScriptSession& session) {
    const int line = *call.arguments.line;
    return session.Command({.message = console::LineText(MessageCode::SetBreakpoint, line),
                            .reply = MessageCode::BreakpointSet,
                            .name = "break",
                            .line = line});
}

MaybeEnding RemoveBreakpoints(Call& call, ScriptSession& session) {
    const std::optional<int> line = call.arguments.line;
    if (!line) {
        return Send(session, MessageCode::RemoveBreakpoints, MessageCode::BreakpointsRemoved,
                    "unbreak");
    }
    return session.Command({.message = console::LineText(MessageCode::RemoveBreakpoint, *line),
                            .reply = MessageCode::BreakpointRemoved,
                            .name = "unbreak",
                            .line = *line});
}

MaybeEnding SendClosed(Call& call, Console& console, const std::string& script) {
    Conversation& talk = console.Talk();
    const vantrel::RequestId id =
        talk.Write(console::kDocumentInfoVariable, value::CVal(console::kClosedPrefix + script));
    if (MaybeEnding ending = console.AwaitResult(id)) return ending;
    if (talk.GetResult(id) != vantrel::ResultOk) {
        return call.Fail(Fault::NoRight, {console.GetModule()});
    }
    return console.Await([&console, &script] { return !console.IsOpen(script); });
}

MaybeEnding CloseScript(Call& call, ScriptSession& session) {
    if (session.GetState().word != RunWord::Idle) {
        return call.Fail(Fault::StillRuns, {session.GetScript()});
    }
    return SendClosed(call, session.GetConsole(), session.GetScript());
}

struct WorkRow {
    std::string_view command;
    SessionWork work;
};

constexpr WorkRow kWorks[] = {
    {"break", SetBreakpoint},       {"reset", ResetScript},   {"set", SetVariable},
    {"start", StartScript},         {"step", StepScript},     {"stop", StopScript},
    {"unbreak", RemoveBreakpoints}, {"vars", PrintVariables},
};

Ending InSession(Call& call, SessionWork work) {
    Console console(call);
    if (MaybeEnding ending = console.Enter()) return *ending;
    ScriptSession session(console, call.arguments.script);
    if (MaybeEnding ending = session.Open()) return *ending;
    MaybeEnding ending = session.Take(call.options.wait, false);
    if (!ending) ending = work(call, session);
    return session.GiveBack(ending.value_or(Ending{}));
}

// On the variables of the script, without its session.
Ending OnScript(Call& call, SessionWork work) {
    Console console(call);
    if (MaybeEnding ending = console.Enter()) return *ending;
    ScriptSession session(console, call.arguments.script);
    if (MaybeEnding ending = session.Open()) return *ending;
    return work(call, session).value_or(Ending{});
}

// ---- variables

// What other consoles have asked for may stand before one's own answer, which ends the list and
// has no name twice.
std::vector<VariableRow> OwnAnswer(const std::vector<std::string>& came) {
    std::vector<VariableRow> rows;
    for (auto message = came.rbegin(); message != came.rend(); ++message) {
        std::optional<VariableRow> row = ReadVariableValues(*message);
        if (!row) continue;
        if (std::ranges::find(rows, row->name, &VariableRow::name) != rows.end()) break;
        rows.push_back(std::move(*row));
    }
    std::ranges::reverse(rows);
    return rows;
}

MaybeEnding PrintVariablesOnce(Call& call, ScriptSession& session) {
    std::vector<std::string> came;
    if (MaybeEnding ending =
            session.AskList({console::CodeText(MessageCode::AskVariables)}, came)) {
        return ending;
    }
    const std::vector<VariableRow> variables = OwnAnswer(came);
    if (call.arguments.watch) call.output.Clear();
    if (call.arguments.json) {
        call.output.PrintText(VariablesJson(text::ToUtf8(session.GetScript()), variables) + '\n');
        return {};
    }
    std::vector<std::string> head{text::ToUtf8(call.translator.Translate("ZMIENNA"))};
    std::ranges::copy(SlotNames(), std::back_inserter(head));
    const auto most = std::ranges::max_element(
        variables, {}, [](const VariableRow& row) { return row.slots.size(); });
    head.resize(most == variables.end() ? 2 : 1 + most->slots.size());
    std::vector<Row> rows;
    std::ranges::transform(variables, std::back_inserter(rows), RowOf);
    call.output.PrintTable(head, rows);
    return {};
}

}  // namespace

MaybeEnding PrintVariables(Call& call, ScriptSession& session) {
    const bool watches = call.arguments.watch.has_value();
    const auto isMeant = [&call] {
        return call.loop.GetSignal() == SIGINT || call.loop.GetSignal() == SIGTERM;
    };
    for (;;) {
        MaybeEnding once = PrintVariablesOnce(call, session);
        if (watches && once && once->status > ExitSignal && isMeant()) return {};
        if (once) return once;
        if (!watches || call.output.IsClosed()) return {};
        const auto gone = [&session] { return session.IsGone(); };
        const std::int64_t next =
            platform::SteadyMilliseconds() + std::int64_t{1000} * *call.arguments.watch;
        const Waited waited = session.GetConsole().Talk().Await(gone, next);
        if (waited == Waited::Done) return session.Check();
        if (waited == Waited::Signal && isMeant()) return {};
        if (waited != Waited::TimeOut) return session.GetConsole().EndingOf(waited);
    }
}

MaybeEnding SetVariable(Call& call, ScriptSession& session) {
    const std::string& name = call.arguments.variable;
    value::CVal value;
    value::ApplyOperatorText(value, call.arguments.text);
    std::vector<std::string> came;
    if (MaybeEnding ending = session.AskList(
            {console::SetVariableText(name, value), console::AskVariableText(name)}, came)) {
        return ending;
    }
    const std::vector<VariableRow> rows = OwnAnswer(came);
    const auto row = std::ranges::find(rows, text::ToUtf8(name), &VariableRow::name);
    if (row == rows.end()) {
        return call.Fail(Fault::NoVariable, {session.GetScript(), name});
    }
    call.output.PrintRow(RowOf(*row));
    return {};
}

SessionWork FindSessionWork(std::string_view command) {
    const auto* row = std::ranges::find(kWorks, command, &WorkRow::command);
    return row == std::end(kWorks) ? nullptr : row->work;
}

Ending Vars(Call& call) {
    return OnScript(call, PrintVariables);
}
Ending Set(Call& call) {
    return OnScript(call, SetVariable);
}
Ending Start(Call& call) {
    return InSession(call, StartScript);
}
Ending Stop(Call& call) {
    return InSession(call, StopScript);
}
Ending Step(Call& call) {
    return InSession(call, StepScript);
}
Ending Reset(Call& call) {
    return InSession(call, ResetScript);
}
Ending Break(Call& call) {
    return InSession(call, SetBreakpoint);
}
Ending Unbreak(Call& call) {
    return InSession(call, RemoveBreakpoints);
}
Ending Reload(Call& call) {
    return InSession(call, ReloadScript);
}

Ending Close(Call& call) {
    if (!call.arguments.force) return InSession(call, CloseScript);
    return OnScript(call, [](Call& own, ScriptSession& session) {
        return SendClosed(own, session.GetConsole(), session.GetScript());
    });
}

Ending Release(Call& call) {
    Console console(call);
    if (MaybeEnding ending = console.Enter()) return *ending;
    ScriptSession session(console, call.arguments.script);
    if (MaybeEnding ending = session.Open()) return *ending;
    return session.GiveBack(session.Recover().value_or(Ending{}));
}

}  // namespace kalvex::kalvexctl
