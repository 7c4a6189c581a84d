// The session that is kept while orders come from the standard input.
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/SteadyTime.h"
#include "programs/kalvexctl/Commands.h"
#include "text/CodePage.h"
#include "vantrel/network/Patience.h"

namespace kalvex::kalvexctl {

namespace {

constexpr std::string_view kRelease = "release";
constexpr std::int64_t kLongPause = 3'600'000;  // milliseconds

// What has been read and is not done yet.
class OrderInput {
  public:
    // The next whole line without its end; at the end of the input also one without an end.
    std::optional<std::string> TakeLine() {
        const std::size_t end = m_text.find('\n');
        if (end == std::string::npos && (!m_ended || m_text.empty())) return {};
        std::string line = m_text.substr(0, end);
        m_text.erase(0, end == std::string::npos ? end : end + 1);
        if (line.ends_with('\r')) line.pop_back();
        return line;
    }

    bool IsEnded() const { return m_ended; }

    // When there is something, or the end has come.
    void Read() {
        char piece[4096];
        const ssize_t read = ::read(STDIN_FILENO, piece, sizeof piece);
        if (read < 0 && (errno == EINTR || errno == EAGAIN)) return;
        if (read <= 0) m_ended = true;
        if (read > 0) m_text.append(piece, static_cast<std::size_t>(read));
    }

  private:
    std::string m_text;
    bool m_ended = !IsStream(STDIN_FILENO);
};

MaybeEnding RunOrder(Call& call, ScriptSession& session, const Order& order) {
    call.arguments = order.arguments;
    if (const SessionWork work = FindSessionWork(order.command->name)) return work(call, session);
    const Ending ending = order.command->run(call);
    if (ending.status == programs::ExitDone) return {};
    return ending;
}

class KeptSession {
  public:
    KeptSession(Call& call, ScriptSession& session)
        : m_call(call), m_session(session), m_isTerminal(::isatty(STDIN_FILENO) == 1) {}

    Ending Run() {
        for (;;) {
            if (MaybeEnding ending = m_session.Check()) return *ending;
            if (m_call.loop.GetSignal() != 0 || m_call.output.IsClosed()) return {};
            const std::optional<std::string> line = m_input.TakeLine();
            if (!line) {
                if (m_input.IsEnded()) return {};
                Wait();
            } else if (MaybeEnding ending = Do(*line)) {
                return *ending;
            }
        }
    }

  private:
    // An ending with status 0 gives the session back.
    MaybeEnding Do(const std::string& line) {
        OrderLine order = ParseOrder(line, m_session.GetScript());
        MaybeEnding fault = std::move(order.ending);
        if (fault && fault->status == programs::ExitDone) {
            m_call.output.PrintText(fault->text);
            return {};
        }
        if (!fault && order.order.command == nullptr) return {};
        if (!fault && order.order.command->name == kRelease) return Ending{};
        if (!fault) fault = RunOrder(m_call, m_session, order.order);
        if (!fault) return {};
        if (m_call.loop.GetSignal() != 0) return Ending{};
        if (MaybeEnding ending = m_session.Check()) return ending;
        if (!m_isTerminal) return fault;
        Output::Tell(*fault);
        return {};
    }

    void Wait() {
        const auto something = [this] { return m_call.loop.IsReadable() || m_session.IsGone(); };
        m_call.loop.Turn(platform::SteadyMilliseconds());
        const Waited waited = m_session.GetConsole().Talk().Await(
            something, platform::SteadyMilliseconds() + kLongPause, Signals::End, STDIN_FILENO);
        if (waited == Waited::Done && m_call.loop.IsReadable()) m_input.Read();
    }

    Call& m_call;
    ScriptSession& m_session;
    const bool m_isTerminal;
    OrderInput m_input;
};

}  // namespace

Ending Take(Call& call) {
    Console console(call);
    if (MaybeEnding ending = console.Enter()) return *ending;
    ScriptSession session(console, call.arguments.script);
    if (MaybeEnding ending = session.Open()) return *ending;
    MaybeEnding ending = session.Take(call.options.wait, call.arguments.force);
    if (!ending) {
        call.output.PrintRow(
            {{Cell{text::ToUtf8(session.GetScript())}, Cell{"taken", Colour::Green}}});
        ending = KeptSession(call, session).Run();
    }
    return session.GiveBack(*ending);
}

}  // namespace kalvex::kalvexctl
