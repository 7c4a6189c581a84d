#include "engine/ScriptStanding.h"

#include <algorithm>

#include "engine/Procedures.h"
#include "engine/WaitFor.h"
#include "operands/VariableTarget.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

struct StopRow {
    StopCause cause;
    StandingState state;
};

constexpr StopRow kStops[] = {
    {StopCause::Command, StandingState::StoppedByCommand},
    {StopCause::Breakpoint, StandingState::StoppedAtBreakpoint},
    {StopCause::Error, StandingState::StoppedOnError},
};

struct StateReleaseRow {
    StandingState state;
    Release release;
};

constexpr StateReleaseRow kStateReleases[] = {
    {StandingState::Idle, Release::Start},
    {StandingState::Running, Release::None},
    {StandingState::StoppedByCommand, Release::Resume},
    {StandingState::StoppedAtBreakpoint, Release::Resume},
    {StandingState::StoppedOnError, Release::Correction},
    {StandingState::Finished, Release::Restart},
};

struct DataReleaseRow {
    DataState state;
    Release release;
};

constexpr DataReleaseRow kDataReleases[] = {
    {DataState::Usable, Release::NextTry},
    {DataState::NoTarget, Release::Correction},
    {DataState::NoElement, Release::Correction},
    {DataState::NotReadable, Release::Correction},
    {DataState::NoAddress, Release::Address},
    {DataState::Down, Release::Connection},
    {DataState::Opening, Release::Connection},
    {DataState::Login, Release::Connection},
    {DataState::LoginRefused, Release::Login},
    {DataState::NotSubscribed, Release::Subscribe},
    {DataState::NoVariable, Release::Variable},
    {DataState::NoAccess, Release::Access},
    {DataState::NoData, Release::Value},
    {DataState::NoValue, Release::Value},
    {DataState::Unknown, Release::Value},
    // The script itself would have to unlock it.
    {DataState::Locked, Release::Restart},
    {DataState::NotAsked, Release::Report},
    {DataState::Asked, Release::Answer},
    {DataState::NotThere, Release::Report},
    {DataState::NoReport, Release::Report},
};

// Errors that come of the script's text alone, so that no further try ends otherwise.
constexpr operands::ScriptError kTextErrors[] = {
    operands::ErrorUnknownKeyword, operands::ErrorUndefinedVariable,
    operands::ErrorNoAssignment,   operands::ErrorNoLabel,
    operands::ErrorNoProcedure,    operands::ErrorNoFileName,
    operands::ErrorBadOperator,    operands::ErrorBadFunction,
    operands::ErrorNoComparison,   operands::ErrorWrongKind,
    operands::ErrorDotInName,      operands::ErrorNoEndif,
    operands::ErrorStrayEndif,     operands::ErrorOpenIf,
};

StandingState StateOf(const CKalvexDoc& document) {
    const RunState& state = document.State();
    if (state.m_bPaused) {
        const StopCause cause = state.standing.GetStopCause();
        return std::ranges::find(kStops, cause, &StopRow::cause)->state;
    }
    if (!state.m_bRunning) return StandingState::Idle;
    if (state.m_nCurrentLine >= document.GetLineCount()) return StandingState::Finished;
    const std::optional<LineOutcome> outcome = state.standing.GetOutcome();
    if (!outcome || outcome == LineOutcome::Finished) return StandingState::Running;
    if (outcome == LineOutcome::Failed) {
        return document.LastError().IsWaiting() ? StandingState::Waiting : StandingState::Failing;
    }
    return state.m_tSleepUntil != 0 ? StandingState::Sleeping : StandingState::Scheduled;
}

// ---- until when

std::int64_t NextWaitTime(const RunState& state) {
    const auto found = state.m_mapWaitFor.find(static_cast<std::uint16_t>(state.m_nCurrentLine));
    if (found == state.m_mapWaitFor.end()) return 0;
    CWaitFor record = found->second;
    // The next try does so.
    if (record.nNext == static_cast<std::int64_t>(record.arrTimes.size())) RollWaitTimes(record);
    return record.arrTimes[static_cast<std::size_t>(record.nNext)];
}

// ---- what could not be read

class MissingValues {
  public:
    explicit MissingValues(CKalvexDoc& document) : m_document(document) {}

    std::vector<MissingValue> Find() {
        const operands::ErrorSlot& error = m_document.LastError();
        if (!error.IsWaiting() && error.m_nErrorCode != operands::ErrorRemoteValue) return {};
        AddRead(error.m_strErrorText);
        const std::string line = LineAsItRuns();
        std::string_view rest = line;
        for (std::string_view token = text::NextToken(rest); !token.empty();
             token = text::NextToken(rest)) {
            AddNamed(token);
        }
        return std::move(m_found);
    }

  private:
    std::string LineAsItRuns() const {
        const RunState& state = m_document.State();
        std::string line;
        NormaliseLine(m_document.Text().GetLine(state.m_nCurrentLine), line);
        if (state.m_lstCallStack.empty()) return line;
        return RewriteLine(state.m_lstCallStack.back(), line);
    }

    // The operand that the try has ended with.
    void AddRead(std::string_view name) {
        if (m_document.Variables().Find(operands::BaseName(name)) == nullptr) return;
        const value::ValueKind kind = value::GetValueKind(name);
        operands::CVariable* target = operands::FindTarget(m_document.Variables(), name);
        MissingValue& missing = m_found.emplace_back(MissingValue{std::string(name), kind, {}});
        if (target == nullptr) {
            missing.condition.state = DataState::NoTarget;
        } else if (target->GetKind() == operands::VariableRemote) {
            missing.condition = m_document.Services().sources->GetCondition(*target, kind);
        } else {
            const bool element =
                target->GetKind() == operands::VariableList && kind == value::KindCurrent;
            missing.condition.state = element ? DataState::NoElement : DataState::NotReadable;
        }
    }

    void AddNamed(std::string_view token) {
        const value::ValueKind kind = value::GetValueKind(token);
        operands::CVariable* target = operands::FindTarget(m_document.Variables(), token);
        const bool known = std::ranges::find(m_found, token, &MissingValue::name) != m_found.end();
        if (known || kind == value::KindNone || target == nullptr) return;
        if (target->GetKind() != operands::VariableRemote) return;
        DataCondition condition = m_document.Services().sources->GetCondition(*target, kind);
        if (condition.state == DataState::Usable) return;
        m_found.push_back({std::string(token), kind, std::move(condition)});
    }

    CKalvexDoc& m_document;
    std::vector<MissingValue> m_found;
};

// ---- what would release it

Release ReleaseOf(const ScriptStanding& standing) {
    const auto row = std::ranges::find(kStateReleases, standing.state, &StateReleaseRow::state);
    if (row != std::end(kStateReleases)) return row->release;
    if (standing.state == StandingState::Sleeping) return Release::Time;
    if (standing.state == StandingState::Scheduled) {
        return standing.until != 0 ? Release::Time : Release::Correction;
    }
    if (!standing.missing.empty()) {
        const DataState data = standing.missing.front().condition.state;
        return std::ranges::find(kDataReleases, data, &DataReleaseRow::state)->release;
    }
    const auto textError = std::ranges::find(kTextErrors, standing.error.code);
    return textError != std::end(kTextErrors) ? Release::Correction : Release::Retry;
}

}  // namespace

ScriptStanding GetStanding(CKalvexDoc& document) {
    const RunState& state = document.State();
    const LineStanding& line = state.standing;
    ScriptStanding result;
    result.state = StateOf(document);
    result.line = state.m_nCurrentLine;
    if (result.line < document.Text().GetLineCount()) {
        result.text = document.Text().GetLine(result.line);
        if (line.GetOutcome() == LineOutcome::Failed)
            result.missing = MissingValues(document).Find();
    }
    if (result.state == StandingState::Sleeping) result.until = state.m_tSleepUntil;
    if (result.state == StandingState::Scheduled) result.until = NextWaitTime(state);
    if (state.m_bPaused) result.stopped = line.GetStopped();
    const bool moves = line.GetOutcome() == LineOutcome::Finished;
    const std::int64_t now = document.Services().clock.Now();
    result.lastFinished = moves ? now : line.GetLastFinished();
    if (result.state != StandingState::Running) {
        result.since = moves ? now : line.GetSince();
        if (!moves) result.error = line.GetError();
    }
    if (result.error.times != 0)
        result.message = document.FormatError(result.error.code, result.error.text);
    result.release = ReleaseOf(result);
    return result;
}

}  // namespace kalvex::engine
