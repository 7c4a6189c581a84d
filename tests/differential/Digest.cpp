#include "differential/Digest.h"

#include <bit>
#include <cmath>

namespace kalvex::differential {

namespace {

constexpr value::ValueKind kKinds[] = {value::KindCurrent, value::KindHour, value::KindDay,
                                       value::KindMonth,   value::KindSpan, value::KindArchive};

}  // namespace

void Digest::Add(std::string_view text) {
    constexpr std::uint64_t kPrime = 1099511628211U;
    std::string pathless(text);
    for (std::size_t at; (at = pathless.find(m_folder)) != std::string::npos;)
        pathless.erase(at, m_folder.size());
    for (const char c : pathless) m_value = (m_value ^ static_cast<unsigned char>(c)) * kPrime;
    m_value = (m_value ^ 256) * kPrime;
}

void Digest::Add(std::int64_t number) {
    m_value = (m_value ^ static_cast<std::uint64_t>(number)) * 0x9E3779B97F4A7C15U;
    m_value ^= m_value >> 29;
}

void Digest::Add(const value::CVal& value) {
    Add(value.GetType());
    Add(value.GetStatus());
    Add(value.GetTime());
    if (value.IsText()) {
        Add(value.Text());
    } else if (value.GetType() == value::ValueType::Double) {
        // Nobody can tell one NaN from another.
        Add(std::isnan(value.Real()) ? 0 : std::bit_cast<std::int64_t>(value.Real()));
    } else if (value::ValueType::IsInteger(value.GetType())) {
        Add(value.Integer());
    }
}

void Digest::Add(const engine::LineStanding& standing) {
    Add(standing.GetOutcome() ? static_cast<std::int64_t>(*standing.GetOutcome()) : -1);
    Add(standing.GetSince());
    Add(standing.GetLastFinished());
    Add(static_cast<std::int64_t>(standing.GetStopCause()));
    Add(standing.GetStopped());
    Add(standing.GetError().code);
    Add(standing.GetError().text);
    Add(static_cast<std::int64_t>(standing.GetError().times));
}

void Digest::Add(const engine::RunState& state) {
    const std::int64_t numbers[] = {
        state.m_bRunning,         state.m_bStepRequested,   state.m_bPaused,
        state.m_nCurrentLine,     state.m_nReportedLine,    state.m_nReportedError,
        state.m_bErrorStanding,   state.stepFailed,         state.m_nPriority,
        state.m_tSleepUntil,      state.m_nPaceCounter,     state.m_nMarkedLine,
        state.m_bInProcedureSkip, state.m_bInProcedureBody, state.m_tLastLineReport,
        state.m_bIgnoreUnknown,   state.report.has_value(), std::ssize(state.m_lstCallStack)};
    for (const std::int64_t number : numbers) Add(number);
    Add(state.standing);
    if (!state.m_lstCallStack.empty()) {
        const engine::CCallFrame& frame = state.m_lstCallStack.back();
        Add(frame.nReturnLine);
        for (const engine::CCallArg& argument : frame.arrArgs) {
            Add(argument.strActual);
            Add(argument.strFormal);
        }
    }
    for (const auto& [line, wait] : state.m_mapWaitFor) {
        Add(line);
        Add(wait.nNext);
        for (const std::int64_t time : wait.arrTimes) Add(time);
    }
}

void Digest::Add(operands::CVariable& variable) {
    Add(variable.GetName());
    Add(variable.GetKind());
    if (variable.GetKind() == operands::VariablePointer) {
        Add(static_cast<operands::CVariablePointer&>(variable).GetTargetName());
    } else if (variable.GetKind() == operands::VariableList) {
        const auto& list = static_cast<operands::CVariableList&>(variable);
        Add(list.GetIterator());
        for (const value::CVal& element : list.Elements()) Add(element);
    } else {
        for (const value::ValueKind kind : kKinds) {
            value::CVal value;
            Add(variable.GetValue(value, kind, operands::kAsStored));
            Add(value);
        }
    }
}

void Digest::Add(const World& world) {
    for (; m_logSeen < world.log.lines.size(); ++m_logSeen) {
        const auto& [level, line] = world.log.lines[m_logSeen];
        Add(level);
        Add(line);
    }
    for (; m_messagesSeen < world.console.messages.size(); ++m_messagesSeen)
        Add(world.console.messages[m_messagesSeen]);
    for (const std::uint64_t count : {world.counts.lines, world.counts.errors, world.counts.waits})
        Add(static_cast<std::int64_t>(count));
    for (const auto& document : world.documents) {
        Add(document->LastError().m_nErrorCode);
        Add(std::string(document->LastError().m_strErrorText));
        Add(document->State());
        for (const auto& variable : document->Variables()) Add(*variable);
    }
}

}  // namespace kalvex::differential
