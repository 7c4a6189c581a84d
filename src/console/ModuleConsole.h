// The module's side of the remote console: what its consoles ask for is done here, and what they
// have to know is published. Main thread; engine texts.
//
// At any time one side, the module or one console, has the session of a script, the right to
// control it. The module has it at first, gives it to whoever asks, and takes all sessions back
// when the connection of any console breaks.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "audit/AuditTrail.h"
#include "console/ConsoleMessages.h"
#include "console/ControlVariables.h"
#include "console/ScriptHost.h"
#include "engine/ConsoleLink.h"
#include "engine/ScriptDocument.h"

namespace kalvex::console {

// The client whose write is being done.
struct ConsoleWriter {
    std::string user = {};
    std::string address = {};  // of its machine, empty when it is this one
    std::string client = {};   // its identity
};

// What the console needs of the module that it stands in.
class ConsoleHost : public ScriptHost {
  public:
    // Takes effect at once; what follows from it is told and published.
    virtual void SetLogLevel(int level) = 0;
    virtual const std::string& GetClientIdentity() const = 0;
};

// Where values that the module has set go: to all clients that have subscribed the variable.
class ValueDistribution {
  public:
    virtual ~ValueDistribution() = default;
    virtual void AddCurrentValueChange(const CVarRCCtrl& variable) = 0;
    // The variables of a script have come or gone.
    virtual void OnVariables(std::string_view path) = 0;
};

class ModuleConsole final : public engine::ConsoleLink {
  public:
    // The host outlives the console.
    explicit ModuleConsole(ConsoleHost& host);

    // None by default: nobody listens. Not owned.
    void SetDistribution(ValueDistribution* clients) { m_clients = clients; }
    // Where it is recorded what consoles change; none by default. Not owned.
    void SetTrail(audit::AuditTrail* trail) { m_trail = trail; }
    ControlVariables& Variables() { return m_variables; }

    // ---- what happens at the module

    // A script has been opened by the module itself, and its consoles are told if they shall mirror
    // it. Before its run is destroyed a script is taken off.
    void OnOpened(const engine::CKalvexDoc& document, bool isTold);
    void OnClosing(const engine::CKalvexDoc& document);
    // The module wants the session back: it takes it when a console gives it, and asks for nothing.
    void AskForSession(const engine::CKalvexDoc& document) { m_asked.insert(&document); }
    void PublishLevel(int level);
    // The connection of this console has broken.
    void TakeBackAllSessions(const ConsoleWriter& client);
    // A client writes a variable: what the value asks for is done.
    void Write(CVarRCCtrl& variable, value::CVal value, const ConsoleWriter& writer);

    // ---- from the interpreter

    void SendCommand(std::string_view documentKey, engine::ConsoleCommand command) override;
    void SendLine(std::string_view documentKey, int line) override;
    void SendState(std::string_view documentKey, engine::ConsoleStateMessage message, int stateWord,
                   int line) override;

  private:
    struct Message;
    struct MessageRow;
    static const MessageRow kMessages[];

    void OnWritten(CVarRCCtrl& variable);
    void OnMessage(CVarRCCtrl& variable);
    void OnLine(CVarRCCtrl& variable);
    void OnDocumentInfo(CVarRCCtrl& variable);
    void OnLogLevel(CVarRCCtrl& variable);

    // The messages, one by one; a null document is none that is open.
    void AskSession(const Message& message);
    void PassSession(const Message& message);
    void Start(const Message& message);
    void Stop(const Message& message);
    void Reset(const Message& message);
    void Step(const Message& message);
    void SetBreakpoint(const Message& message);
    void RemoveBreakpoint(const Message& message);
    void RemoveBreakpoints(const Message& message);
    void Echo(const Message& message);
    void SetVariable(const Message& message);
    void AskVariable(const Message& message);
    void AskVariables(const Message& message);

    // Whether the module had the session.
    bool HandOverSession(std::string_view path, std::string_view asking);
    void TakeSession(engine::CKalvexDoc* document, std::string_view newHolder);
    void OpenForClient(const std::string& path);
    void CloseForClient(engine::CKalvexDoc& document);
    // With who writes.
    void Record(audit::AuditRecord record);
    void Publish(CVarRCCtrl* variable, value::CVal value);
    void SendText(std::string_view path, std::string text);
    void SendList(std::string_view path, std::string text);
    void SendDocumentNotice(std::string_view path);

    ConsoleHost& m_host;
    ControlVariables m_variables;
    ValueDistribution* m_clients = nullptr;
    audit::AuditTrail* m_trail = nullptr;
    const ConsoleWriter* m_writer = nullptr;      // of the write that is being done
    int m_level = 0;                              // as it was published last
    std::set<const engine::CKalvexDoc*> m_asked;  // whose session the module has asked for
};

}  // namespace kalvex::console
