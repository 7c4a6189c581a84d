// Commands about a module as a whole: its list of scripts, its log and the level of it.
#include <algorithm>
#include <csignal>
#include <limits>
#include <utility>

#include "app/Log.h"
#include "console/ConsoleMessages.h"
#include "programs/kalvexctl/Commands.h"
#include "programs/kalvexctl/Console.h"
#include "programs/kalvexctl/Questions.h"
#include "text/CodePage.h"
#include "vantrel/Codes.h"

namespace kalvex::kalvexctl {

namespace {

constexpr std::uint32_t kAllLines = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kForEver = std::numeric_limits<std::int64_t>::max();

// Notes lines while they may come in any order, and prints them from then on.
class LogPrinter final : public ConversationListener {
  public:
    LogPrinter(Output& output, int mostLevel) : m_output(output), m_mostLevel(mostLevel) {}

    void OnValue(const std::string&, const value::CVal&) override {}

    void OnLog(vantrel::LogMessage message) override {
        if (message.level > m_mostLevel) return;
        if (m_prints) return Print(message);
        m_lines.push_back(std::move(message));
    }

    // A line that came between the two wishes stands before the older ones, and among them.
    void PrintLines(std::size_t most) {
        const auto older = [](const vantrel::LogMessage& a, const vantrel::LogMessage& b) {
            return b.time < a.time;
        };
        const auto before = std::ranges::adjacent_find(m_lines, older);
        auto first = before == m_lines.end() ? m_lines.begin() : before + 1;
        const auto count = static_cast<std::size_t>(m_lines.end() - first);
        first += static_cast<std::ptrdiff_t>(count - std::min(count, most));
        std::for_each(first, m_lines.end(), [this](const auto& line) { Print(line); });
        m_lines.clear();
        m_prints = true;
    }

  private:
    void Print(const vantrel::LogMessage& message) {
        const std::string line = app::FormatLogLine({message.time, message.level, message.text});
        m_output.PrintText(Printable(text::ToUtf8(line)) + '\n');
    }

    Output& m_output;
    const int m_mostLevel;
    bool m_prints = false;
    std::vector<vantrel::LogMessage> m_lines;
};

Ending Follow(Call& call, Console& console) {
    const auto closed = [&call] { return call.output.IsClosed(); };
    const Waited waited = console.Talk().Await(closed, kForEver);
    const int signal = call.loop.GetSignal();
    const bool isMeant = waited == Waited::Signal && (signal == SIGINT || signal == SIGTERM);
    return waited == Waited::Done || isMeant ? Ending{} : console.EndingOf(waited);
}

// The module echoes a path whether it could open it or not.
MaybeEnding AskToOpen(Call& call) {
    Console console(call);
    if (MaybeEnding ending = console.Enter()) return ending;
    const vantrel::RequestId id =
        console.Talk().Write(console::kDocumentInfoVariable, value::CVal(call.arguments.path));
    if (MaybeEnding ending = console.AwaitResult(id)) return ending;
    if (console.Talk().GetResult(id) == vantrel::ResultOk) return {};
    return call.Fail(Fault::NoRight, {console.GetModule()});
}

}  // namespace

Ending List(Call& call) {
    Console console(call);
    if (MaybeEnding ending = console.Enter()) return *ending;
    if (MaybeEnding ending = console.Open({})) return *ending;
    for (const std::string& script : console.Scripts()) {
        call.output.PrintLine(text::ToUtf8(script));
    }
    return {};
}

// A module lists a script by its path below the module's folder, whatever it was opened by, so the
// module is asked whether the path is that of an open one.
Ending Open(Call& call) {
    if (MaybeEnding ending = AskToOpen(call)) return *ending;
    Console console(call);
    if (MaybeEnding ending = console.Enter()) return *ending;
    if (MaybeEnding ending = console.Open({})) return *ending;
    const std::string& path = call.arguments.path;
    if (console.IsOpen(path)) return {};
    Questions questions(call);
    questions.Ask(console.GetModule(), supervision::Method::GetBreakpoints, path, 0,
                  [](std::string_view) { return true; });
    const MaybeEnding ending = questions.Await();
    if (!ending || ending->status > ExitSignal) return ending.value_or(Ending{});
    return call.Fail(Fault::ScriptNotFound, {console.GetModule(), path});
}

Ending Log(Call& call) {
    Console console(call);
    if (MaybeEnding ending = console.Enter()) return *ending;
    LogPrinter printer(call.output, call.arguments.mostLevel);
    console.SetListener(&printer);
    Conversation& talk = console.Talk();
    if (call.arguments.follow) talk.Subscribe({}, vantrel::SubscribeFlag::LogMessages);
    const auto count = static_cast<std::uint32_t>(call.arguments.count);
    const bool isOfAllLevels = call.arguments.mostLevel >= platform::LogTransmission;
    // The module counts the lines of all levels.
    if (count > 0) talk.AskLastMessages(isOfAllLevels ? count : kAllLines);
    const vantrel::RequestId probe = talk.Probe();
    MaybeEnding ending = console.AwaitResult(probe);
    if (!ending && talk.GetResult(probe) == vantrel::ResultNoAccess) {
        ending = call.Fail(Fault::NoRight, {console.GetModule()});
    }
    if (!ending) {
        printer.PrintLines(count > 0 ? count : kAllLines);
        ending = call.arguments.follow ? Follow(call, console) : Ending{};
    }
    console.SetListener(nullptr);
    return *ending;
}

Ending Level(Call& call) {
    Console console(call);
    if (MaybeEnding ending = console.Enter()) return *ending;
    Conversation& talk = console.Talk();
    talk.Subscribe({std::string(console::kLogLevelVariable)});
    if (MaybeEnding ending = console.Await([&talk] { return talk.IsSubscribed(); })) return *ending;
    const auto level = [&talk] {
        int number = 0;
        talk.GetValue(console::kLogLevelVariable).GetValData(value::ValueType::Int, &number);
        return number;
    };
    if (!call.arguments.level) {
        call.output.PrintLine(std::to_string(level()));
        return {};
    }
    const int wanted = *call.arguments.level;
    const vantrel::RequestId id = talk.Write(console::kLogLevelVariable, value::CVal(wanted));
    if (MaybeEnding ending = console.AwaitResult(id)) return *ending;
    if (talk.GetResult(id) == vantrel::ResultNoAccess) {
        return call.Fail(Fault::NoRight, {console.GetModule()});
    }
    const auto published = [&level, wanted] { return level() == wanted; };
    return console.Await(published).value_or(Ending{});
}

}  // namespace kalvex::kalvexctl
