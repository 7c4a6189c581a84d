#include "programs/kalvexctl/ScriptSession.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/SteadyTime.h"
#include "value/Status.h"
#include "vantrel/Codes.h"
#include "vantrel/network/Patience.h"

namespace kalvex::kalvexctl {

namespace {

using console::MessageCode;

constexpr std::string_view kConsoleSuffix = "_RC";
constexpr std::uint16_t kBad = value::Status::Unknown | value::Status::TransmissionError;
constexpr std::int64_t kAskPause = 1000;  // milliseconds
// A client whose identity reads as this number is handed the session as if it forced.
constexpr int kForcingIdentity = 1;

}  // namespace

ScriptSession::ScriptSession(Console& console, std::string script)
    : m_console(console),
      m_script(std::move(script)),
      m_listVariable(std::string(console::kListPrefix) + m_script),
      m_lineVariable(std::string(console::kLinePrefix) + m_script) {
    m_console.SetListener(this);
}

ScriptSession::~ScriptSession() {
    m_console.SetListener(nullptr);
}

MaybeEnding ScriptSession::Open() {
    if (MaybeEnding ending = m_console.Open({m_script, m_listVariable, m_lineVariable})) {
        return ending;
    }
    return m_console.CheckScript(m_script);
}

void ScriptSession::Send(const std::string& text) {
    m_console.Talk().Write(m_script, value::CVal(text));
}

void ScriptSession::WantLines() {
    m_console.Talk().Write(m_lineVariable, value::CVal(int{console::LineReportsWanted}));
}

// ---- what comes

void ScriptSession::OnValue(const std::string& variable, const value::CVal& value) {
    if ((value.GetStatus() & kBad) != 0) return;
    if (variable == m_lineVariable) {
        int line = 0;
        value.GetValData(value::ValueType::Int, &line);
        return OnLine(line);
    }
    std::string text;
    value.GetValData(value::ValueType::Text, text);
    if (variable == m_script) return OnCommand(text);
    if (variable == m_listVariable) m_listMessages.push_back(std::move(text));
}

void ScriptSession::OnCommand(const std::string& text) {
    const console::MessageFields fields(text);
    switch (fields.Code()) {
        case MessageCode::AskSession:
            OnAsked(fields);
            break;
        case MessageCode::PassSession:
            OnPassed(fields, text);
            break;
        case MessageCode::SessionHeld:
            OnHolder(fields);
            break;
        case MessageCode::Started:
        case MessageCode::Stopped:
        case MessageCode::Stepped:
        case MessageCode::BreakpointReached:
            OnState(fields);
            break;
        case MessageCode::WasReset:
            m_state = {RunWord::Idle, {}};
            break;
        default:
            break;
    }
    NoteReply(fields);
}

void ScriptSession::OnState(const console::MessageFields& fields) {
    m_state = {WordOf(static_cast<unsigned>(fields.Number(1))), fields.NumberOr(2, -1)};
}

// Only what runs tells lines.
void ScriptSession::OnLine(int line) {
    if (line < 0) return;
    if (m_state.word == RunWord::Unknown) m_state.word = RunWord::Running;
    if (m_state.word == RunWord::Running) m_state.line = line;
}

void ScriptSession::NoteReply(const console::MessageFields& fields) {
    if (m_exchange == nullptr || fields.Code() != m_exchange->reply) return;
    if (m_exchange->line && fields.NumberOr(1, -1) != *m_exchange->line) return;
    ++m_replies;
}

void ScriptSession::OnAsked(const console::MessageFields& fields) {
    const std::string asking(fields.Text(1));
    if (asking == m_console.GetIdentity()) {
        ++m_echoed;
        return;
    }
    if (asking.empty() || !m_held || !m_givenBack.empty()) return;
    const bool isForced = fields.Number(2) != 0 || fields.Number(1) == kForcingIdentity;
    if (!isForced && asking.ends_with(kConsoleSuffix)) {
        return Send(NamesText(MessageCode::SessionHeld, m_console.GetIdentity(), asking));
    }
    Send(NamesText(MessageCode::PassSession, m_console.GetIdentity(), asking));
    m_held = false;
    m_lostTo = asking;
}

void ScriptSession::OnPassed(const console::MessageFields& fields, const std::string& text) {
    const std::string holder(fields.Text(1));
    const std::string newHolder(fields.Text(2));
    if (newHolder == m_console.GetIdentity()) {
        if (m_held || m_asked == 0 || !m_givenBack.empty()) return;
        m_held = true;
        m_state = {};
        if (!fields.Text(3).empty()) {
            m_state = {WordOf(static_cast<unsigned>(fields.Number(3))), fields.NumberOr(4, -1)};
        }
        return;
    }
    if (!m_givenBack.empty() && text == m_givenBack) m_isGivenBack = true;
    m_isFree = !newHolder.ends_with(kConsoleSuffix);
    if (!m_held || !m_givenBack.empty() || holder != m_console.GetModuleIdentity()) return;
    if (newHolder == holder) return;
    m_held = false;
    m_lostTo = newHolder;
}

void ScriptSession::OnHolder(const console::MessageFields& fields) {
    if (fields.Text(2) == m_console.GetIdentity()) m_holder = fields.Text(1);
}

// ---- asking

void ScriptSession::Ask(bool force) {
    ++m_asked;
    m_isFree = false;
    m_forced = m_forced || force;
    Send(console::AskSessionText(m_console.GetIdentity(), force));
}

MaybeEnding ScriptSession::AwaitEchoes(Signals signals) {
    return m_console.Await([this] { return m_held || m_echoed >= m_asked; }, signals);
}

Ending ScriptSession::EndingOfNone() const {
    if (m_holder.empty()) return m_console.Fail(Fault::SessionDead, {m_script});
    return m_console.Fail(Fault::SessionHeld, {m_script, m_holder});
}

MaybeEnding ScriptSession::Take(int wait, bool force) {
    if (MaybeEnding ending = AwaitAsked(wait, force)) return ending;
    WantLines();
    return {};
}

bool ScriptSession::MayForce(bool force) const {
    return force && !m_forced && !m_holder.empty();
}

MaybeEnding ScriptSession::AwaitAsked(int wait, bool force) {
    const std::int64_t begin = platform::SteadyMilliseconds();
    std::int64_t deadline = begin + std::int64_t{1000} * wait;
    std::int64_t nextAsk = begin;
    while (!m_held) {
        const bool forces = MayForce(force);
        if (forces) deadline = std::max(deadline, m_console.AnswerDue());
        // A holder has some time to tell that it lives.
        const std::int64_t end =
            m_holder.empty() ? std::max(deadline, begin + kAskPause) : deadline;
        const bool isOver =
            m_asked > 0 && !forces && !m_isFree && platform::SteadyMilliseconds() >= end;
        if (isOver) {
            if (MaybeEnding ending = AwaitEchoes(Signals::End)) return ending;
            if (m_held) return {};
            return EndingOfNone();
        }
        if (forces || m_isFree || platform::SteadyMilliseconds() >= nextAsk) {
            Ask(forces || m_forced);
            nextAsk = platform::SteadyMilliseconds() + kAskPause;
        }
        const auto something = [this, force, knew = m_holder] {
            return m_held || m_isFree || MayForce(force) || m_holder != knew || IsGone();
        };
        const Waited waited = m_console.Talk().Await(something, std::min(end, nextAsk));
        if (waited == Waited::Signal || waited == Waited::Lost) return m_console.EndingOf(waited);
        if (MaybeEnding ending = Check()) return ending;
    }
    return {};
}

MaybeEnding ScriptSession::Recover() {
    const auto answered = [this] { return m_held || (m_echoed >= m_asked && !m_holder.empty()); };
    for (const bool again : {false, true}) {
        Ask(false);
        const Waited waited = m_console.Talk().Await(answered, m_console.AnswerDue());
        if (waited == Waited::Signal || waited == Waited::Lost) return m_console.EndingOf(waited);
        if (m_held) return {};
        if (MaybeEnding ending = AwaitEchoes(Signals::End)) return ending;
        if (m_held) return {};
        if (waited == Waited::Done || again) return EndingOfNone();
        Send(NamesText(MessageCode::PassSession, m_console.GetIdentity(),
                       m_console.GetModuleIdentity()));
    }
    return {};
}

// ---- giving back

Ending ScriptSession::GiveBack(Ending ending) {
    const bool keepsOwn = ending.status != programs::ExitDone;
    Conversation& talk = m_console.Talk();
    if (talk.IsLost()) return ending;
    // The module may be about to hand it over.
    MaybeEnding fault;
    if (!m_held && m_echoed < m_asked && m_lostTo.empty()) fault = AwaitEchoes(Signals::Wait);
    if (!fault && m_held && m_console.IsOpen(m_script)) {
        m_givenBack = NamesText(MessageCode::PassSession, m_console.GetIdentity(),
                                m_console.GetModuleIdentity());
        Send(m_givenBack);
        const auto done = [this] { return m_isGivenBack || !m_console.IsOpen(m_script); };
        const Waited waited = talk.Await(done, m_console.AnswerDue(), Signals::Wait);
        if (waited != Waited::Done) fault = m_console.EndingOf(waited);
        m_held = false;
        if (m_isGivenBack) {
            const vantrel::RequestId id =
                talk.Write(m_lineVariable, value::CVal(int{console::LineReportsWanted}));
            m_console.Await([&talk, id] { return talk.IsAnswered(id); }, Signals::Wait);
        }
    }
    if (fault) talk.Break();
    talk.End();
    return fault && !keepsOwn ? *fault : ending;
}

// ---- commands

bool ScriptSession::IsGone() const {
    return m_console.Talk().IsLost() || !m_lostTo.empty() || !m_console.IsOpen(m_script);
}

MaybeEnding ScriptSession::Check() {
    if (m_console.Talk().IsLost()) return m_console.EndingOf(Waited::Lost);
    if (!m_lostTo.empty()) return m_console.Fail(Fault::SessionTaken, {m_script, m_lostTo});
    if (m_console.IsOpen(m_script)) return {};
    m_held = false;
    // A module that ends closes its scripts first, and answers nothing any more.
    if (MaybeEnding ending = m_console.AwaitResult(m_console.Talk().Probe())) return ending;
    return m_console.Fail(Fault::ScriptNotOpen, {m_console.GetModule(), m_script});
}

MaybeEnding ScriptSession::Command(const Exchange& exchange) {
    Conversation& talk = m_console.Talk();
    m_exchange = &exchange;
    m_replies = 0;
    Send(exchange.message);
    const vantrel::RequestId probe = talk.Probe();
    const auto isOver = [this, &exchange, &talk, probe] {
        const bool comesNothing = talk.IsAnswered(probe) && m_replies == 0;
        return m_replies >= exchange.count || comesNothing || IsGone();
    };
    const Waited waited = talk.Await(isOver, m_console.AnswerDue());
    m_exchange = nullptr;
    if (waited == Waited::Signal) return m_console.EndingOf(waited);
    if (MaybeEnding ending = Check()) return ending;
    if (m_replies >= exchange.count) return {};
    const bool isHandled = talk.IsAnswered(probe);
    const bool isRefused = isHandled && exchange.fault != Fault::NoAnswer;
    if (isRefused) return m_console.Fail(exchange.fault, {m_script});
    return m_console.Fail(Fault::NoAnswer, {m_script, exchange.name});
}

MaybeEnding ScriptSession::AskList(const std::vector<std::string>& messages,
                                   std::vector<std::string>& came) {
    Conversation& talk = m_console.Talk();
    m_listMessages.clear();
    vantrel::RequestId last = 0;
    for (const std::string& message : messages) {
        last = talk.Write(m_listVariable, value::CVal(message));
    }
    const auto isOver = [this, &talk, last] { return talk.IsAnswered(last) || IsGone(); };
    if (MaybeEnding ending = m_console.Await(isOver)) return ending;
    if (MaybeEnding ending = Check()) return ending;
    if (talk.GetResult(last) == vantrel::ResultNoAccess) {
        return m_console.Fail(Fault::NoRight, {m_console.GetModule()});
    }
    came = std::move(m_listMessages);
    m_listMessages.clear();
    return {};
}

}  // namespace kalvex::kalvexctl
