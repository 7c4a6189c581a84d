// EXEC and its family. A failure is a log line or a code, and stops no script.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <span>

#include "engine/ScriptDocument.h"
#include "host/HostStatements.h"
#include "host/Programs.h"
#include "operands/OperandEvaluator.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "text/TextFormat.h"
#include "value/ValueText.h"

namespace kalvex::host {

namespace {

constexpr const char* kNotStarted = "%s - Błąd uruchomienia programu (1): %s (%s)";
constexpr const char* kNotStartedAgain = "%s - Błąd uruchomienia programu (2): %s (%s)";
constexpr const char* kNoSuchProgram =
    "%s - Brak procesu o podanym identyfikatorze (Id procesu %d)";
constexpr const char* kNotTerminated = "%s - Błąd przerwania pracy programu: %s (Id procesu %d)";
constexpr const char* kNotAsked =
    "%s - Błąd wysłania polecenia zamknięcia programu (Id procesu %d)";
constexpr const char* kNotPolled =
    "%s - Błąd pobrania informacji o zamknięciu programu: %s (Id procesu %d)";
constexpr const char* kNotClosed = "%s - Brak informacji o zamknięciu programu (Id procesu %d)";

// Codes that the functions yield.
enum : int {
    CheckRunning = 1,
    CheckEnded = 0,
    ExitCodeRunning = -100,
    StateUnreadable = -1,
    NoSuchProgram = -2,
    NoIdentifier = -3,
    CloseEnded = 1,
    CloseTimedOut = 0,
    CloseNoWindow = -2,
    CloseNoSuchProgram = -3,
};

platform::Processes& ProcessesOf(operands::ScriptContext& script) {
    return *script.Services().processes;
}

StartedPrograms& StartedBy(operands::ScriptContext& script) {
    return script.GetPart<StartedPrograms>(operands::PartId::Processes, ProcessesOf(script));
}

operands::FunctionResult Yield(operands::FunctionCall& call, int value) {
    call.out = value::CVal(value);
    return operands::FunctionResult::Done;
}

template <class... Values>
void LogFailure(operands::ScriptContext& script, const char* text, const Values&... values) {
    const operands::ValueServices& services = script.Services();
    services.log.Log(
        text::FormatText(services.translator.Translate(text), {script.GetPathName(), values...}),
        platform::LogErrors);
}

std::optional<int> ReadInteger(operands::ScriptContext& script, std::string_view token) {
    value::CVal value;
    if (!operands::EvaluateOperand(script, token, value, value::ValueType::Int, true))
        return std::nullopt;
    return value::ValueToInt(value);
}

std::optional<double> ReadIdentifier(operands::FunctionCall& call) {
    value::CVal value;
    if (!operands::EvaluateOperand(call.script, call.arguments[0], value, value::ValueType::Double,
                                   true)) {
        return std::nullopt;
    }
    return value::ValueToDouble(value);
}

std::string WithSlashes(std::string path) {
    std::ranges::replace(path, '\\', '/');
    return path;
}

platform::ProgramCall CallOf(const platform::Paths& paths, const std::string& name,
                             std::span<const std::string> parameters) {
    platform::ProgramCall call;
    const std::string program = WithSlashes(name);
    const bool isPath = program.find('/') != std::string::npos;
    call.program = platform::NativePath(isPath ? paths.GetFullPath(program) : program);
    for (const std::string& word : parameters) call.arguments.push_back(text::ToUtf8(word));
    return call;
}

// Program and parameters as one line, in which a blank ends a program without quotes.
std::vector<std::string> WordsOf(const ProgramLine& line) {
    if (!line.isQuoted) {
        std::vector<std::string> words = SplitParameters(line.program + ' ' + line.parameters);
        if (words.empty()) words.emplace_back();
        return words;
    }
    std::vector<std::string> words = SplitParameters(line.parameters);
    words.insert(words.begin(), line.program);
    return words;
}

// The identifier, 0 when neither attempt has started the program. The second one takes program and
// parameters as one line, and leaves the directory aside.
int StartProgram(operands::ScriptContext& script, std::string_view text, ExecForm form) {
    const ProgramLine line = ReadProgramLine(script, text, form);
    const platform::Paths& paths = script.Services().paths;
    platform::ProgramCall call = CallOf(paths, line.program, SplitParameters(line.parameters));
    if (!line.directory.empty())
        call.directory = platform::NativePath(paths.GetFullPath(line.directory));

    platform::Processes& processes = ProcessesOf(script);
    std::string error;
    int id = processes.Start(call, error);
    if (id != 0) return id;
    LogFailure(script, kNotStarted, text::FromUtf8(error), line.program);
    const std::vector<std::string> words = WordsOf(line);
    id = processes.Start(CallOf(paths, words.front(), std::span(words).subspan(1)), error);
    if (id == 0) LogFailure(script, kNotStartedAgain, text::FromUtf8(error), line.program);
    return id;
}

// One CLOSE_EXEC, as a statement, which logs, or as a function, which yields a code.
class Closing {
  public:
    Closing(operands::ScriptContext& script, int id, bool logs)
        : m_script(script), m_processes(ProcessesOf(script)), m_id(id), m_logs(logs) {}

    bool Request() {
        if (m_processes.RequestClose(m_id)) return true;
        Log(kNotAsked, std::to_string(m_id));
        return false;
    }

    bool Terminate() {
        std::string error;
        if (m_processes.Terminate(m_id, 0, error)) return true;
        Log(kNotTerminated, text::FromUtf8(error), std::to_string(m_id));
        return false;
    }

    int WaitForEnd(int seconds) {
        int result = CloseTimedOut;
        for (int i = 0; i < std::max(seconds, 1) && !m_processes.IsEnding(); ++i) {
            m_processes.WaitSecond();
            std::string error;
            const std::optional<int> code = m_processes.GetExitCode(m_id, error);
            if (!code) {
                Log(kNotPolled, text::FromUtf8(error), std::to_string(m_id));
                result = StateUnreadable;
            } else if (*code != platform::Processes::kStillActive) {
                return CloseEnded;
            } else {
                result = CloseTimedOut;
            }
        }
        Log(kNotClosed, std::to_string(m_id));
        return result;
    }

  private:
    template <class... Values>
    void Log(const char* text, const Values&... values) {
        if (m_logs) LogFailure(m_script, text, values...);
    }

    operands::ScriptContext& m_script;
    platform::Processes& m_processes;
    int m_id;
    bool m_logs;
};

// The program that the next word names; 0, and a line in the log, when there is none. Nothing when
// the word has no number.
std::optional<int> TakeProgram(engine::StatementCall& call) {
    const std::optional<int> wanted = ReadInteger(call.document, text::NextToken(call.rest));
    if (!wanted) return std::nullopt;
    const int id = StartedBy(call.document).Find(*wanted);
    if (id == 0) LogFailure(call.document, kNoSuchProgram, std::to_string(*wanted));
    return id;
}

}  // namespace

engine::LineOutcome ExecuteExec(engine::StatementCall& call) {
    const int id = StartProgram(call.document, call.rest, ExecForm::Statement);
    if (id != 0) ProcessesOf(call.document).Release(id);
    return engine::LineOutcome::Finished;
}

engine::LineOutcome ExecuteTerminateExec(engine::StatementCall& call) {
    engine::CKalvexDoc& document = call.document;
    const std::optional<int> program = TakeProgram(call);
    if (!program || *program == 0) return engine::FinishedIf(program.has_value());
    const std::string_view token = text::NextToken(call.rest);
    const std::optional<int> code = token.empty() ? 0 : ReadInteger(document, token);
    std::string error = std::strerror(EINVAL);
    const bool ended = code && ProcessesOf(document).Terminate(*program, *code, error);
    if (!ended) {
        LogFailure(document, kNotTerminated, text::FromUtf8(error), std::to_string(*program));
    }
    return engine::LineOutcome::Finished;
}

engine::LineOutcome ExecuteCloseExec(engine::StatementCall& call) {
    engine::CKalvexDoc& document = call.document;
    const std::optional<int> program = TakeProgram(call);
    if (!program || *program == 0) return engine::FinishedIf(program.has_value());
    const std::string_view force = text::NextToken(call.rest);
    const std::string_view wait = text::NextToken(call.rest);
    const bool forced = !force.empty() && ReadInteger(document, force).value_or(0) != 0;
    Closing closing(document, *program, true);
    if (closing.Request()) {
        closing.WaitForEnd(wait.empty() ? 1 : ReadInteger(document, wait).value_or(1));
    } else if (forced) {
        closing.Terminate();
    }
    return engine::LineOutcome::Finished;
}

operands::FunctionResult ExecFunction(operands::FunctionCall& call) {
    const int id = StartProgram(call.script, operands::TextBehindKeyword(call), ExecForm::Function);
    if (id != 0) StartedBy(call.script).Add(id);
    return Yield(call, id);
}

operands::FunctionResult CheckExecActivity(operands::FunctionCall& call) {
    const std::optional<double> wanted = ReadIdentifier(call);
    if (!wanted) return Yield(call, NoIdentifier);
    const int id = StartedBy(call.script).Find(*wanted);
    if (id == 0) return Yield(call, NoSuchProgram);
    std::string error;
    const std::optional<int> code = ProcessesOf(call.script).GetExitCode(id, error);
    if (!code) return Yield(call, StateUnreadable);
    return Yield(call, *code == platform::Processes::kStillActive ? CheckRunning : CheckEnded);
}

operands::FunctionResult GetExitCodeExec(operands::FunctionCall& call) {
    const std::optional<double> wanted = ReadIdentifier(call);
    if (!wanted) return Yield(call, NoIdentifier);
    const int id = StartedBy(call.script).Find(*wanted);
    if (id == 0) return Yield(call, NoSuchProgram);
    std::string error;
    const std::optional<int> code = ProcessesOf(call.script).GetExitCode(id, error);
    if (!code) return Yield(call, StateUnreadable);
    return Yield(call, *code == platform::Processes::kStillActive ? ExitCodeRunning : *code);
}

operands::FunctionResult TerminateExecFunction(operands::FunctionCall& call) {
    const std::optional<double> wanted = ReadIdentifier(call);
    if (!wanted) return operands::FunctionResult::Failed;
    const std::string_view token = call.arguments[1];
    const std::optional<int> code = token.empty() ? 0 : ReadInteger(call.script, token);
    if (!code) return operands::FunctionResult::Failed;
    const int id = StartedBy(call.script).Find(*wanted);
    if (id == 0) return Yield(call, NoSuchProgram);
    std::string error;
    return Yield(call, ProcessesOf(call.script).Terminate(id, *code, error) ? 1 : 0);
}

operands::FunctionResult CloseExecFunction(operands::FunctionCall& call) {
    const std::optional<double> wanted = ReadIdentifier(call);
    if (!wanted) return operands::FunctionResult::Failed;
    const int id = StartedBy(call.script).Find(*wanted);
    if (id == 0) return Yield(call, CloseNoSuchProgram);
    const std::string_view force = call.arguments[1];
    const std::optional<int> forced = force.empty() ? 0 : ReadInteger(call.script, force);
    if (!forced) return operands::FunctionResult::Failed;
    Closing closing(call.script, id, false);
    if (!closing.Request()) {
        if (*forced == 0) return Yield(call, CloseNoWindow);
        return Yield(call, closing.Terminate() ? 1 : 0);
    }
    const std::string_view wait = call.arguments[2];
    const std::optional<int> seconds = wait.empty() ? 1 : ReadInteger(call.script, wait);
    return seconds ? Yield(call, closing.WaitForEnd(*seconds)) : operands::FunctionResult::Failed;
}

}  // namespace kalvex::host
