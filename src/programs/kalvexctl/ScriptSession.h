// The session of one script: asking for it, what the module and other consoles say meanwhile,
// giving it back. Main thread; engine texts.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "console/ConsoleMessages.h"
#include "programs/kalvexctl/Console.h"
#include "programs/kalvexctl/ScriptState.h"

namespace kalvex::kalvexctl {

class ScriptSession final : private ConversationListener {
  public:
    ScriptSession(Console& console, std::string script);
    ~ScriptSession() override;

    // Subscribes the script's variables; ends when it is not open, or the right is missing.
    MaybeEnding Open();

    // Asks for the session until it has it, or `wait` seconds are over.
    MaybeEnding Take(int wait, bool force);
    // Asks once without force and waits for the answer of whoever has it, as long as for any
    // answer; takes it from a holder who does not answer.
    MaybeEnding Recover();
    // If it has the session, or may come to have it; then says farewell. The answer is `ending`, or
    // what went wrong here when that was nothing.
    Ending GiveBack(Ending ending);

    const std::string& GetScript() const { return m_script; }
    const ScriptState& GetState() const { return m_state; }
    Console& GetConsole() { return m_console; }

    // Whether the session, the script or the connection is gone, and what to say of it then.
    bool IsGone() const;
    MaybeEnding Check();

    // Sends a message on the command variable and waits for its reply: `count` messages of the
    // code, with the line where one is given. Nothing within the time: `fault`, or, where the
    // module has not even handled it, that it did not answer.
    struct Exchange {
        std::string message;
        console::MessageCode reply;
        const char* name;  // of the command
        Fault fault = Fault::NoAnswer;
        int count = 1;
        std::optional<int> line = {};
    };
    MaybeEnding Command(const Exchange& exchange);

    // Sends messages on the list variable; `came` has those that came there until all were handled.
    MaybeEnding AskList(const std::vector<std::string>& messages, std::vector<std::string>& came);

  private:
    void OnValue(const std::string& variable, const value::CVal& value) override;
    void OnCommand(const std::string& text);
    void OnLine(int line);
    void OnAsked(const console::MessageFields& fields);
    void OnPassed(const console::MessageFields& fields, const std::string& text);
    void OnHolder(const console::MessageFields& fields);
    void OnState(const console::MessageFields& fields);
    void OnReset(const console::MessageFields& fields);
    void NoteReply(const console::MessageFields& fields);

    void Send(const std::string& text);
    void WantLines();
    void Ask(bool force);
    bool MayForce(bool force) const;
    MaybeEnding AwaitAsked(int wait, bool force);
    MaybeEnding AwaitEchoes(Signals signals);
    Ending EndingOfNone() const;

    Console& m_console;
    const std::string m_script;
    const std::string m_listVariable;
    const std::string m_lineVariable;
    ScriptState m_state;

    bool m_held = false;
    std::string m_lostTo;  // who has got the session instead
    int m_asked = 0;
    int m_echoed = 0;
    bool m_forced = false;
    bool m_isFree = false;    // the module seems to have it
    std::string m_holder;     // as the last refusal names it
    std::string m_givenBack;  // the message whose echo is awaited
    bool m_isGivenBack = false;

    const Exchange* m_exchange = nullptr;
    int m_replies = 0;
    std::vector<std::string> m_listMessages;
};

}  // namespace kalvex::kalvexctl
