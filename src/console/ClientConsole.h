// A console's side of the remote console: the copies of the module's scripts show what the module
// tells, and what the person at the console wants is sent to the module. A console interprets
// nothing; the texts are local copies of the same files. Main thread; engine texts.
//
// Of each script this side holds the session, has asked for it, or neither; only the holder sends
// commands. A session is given by the side that holds it. When the connection of any console breaks
// the module takes back the sessions of all of them and does not tell those that live: such a
// console goes on believing that it holds, and so two sides may do so at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "console/ConsoleMessages.h"
#include "console/ControlVariables.h"
#include "console/ScriptHost.h"
#include "engine/ConsoleLink.h"
#include "engine/ScriptDocument.h"
#include "platform/LogSink.h"
#include "platform/MainLoop.h"
#include "platform/Questions.h"
#include "platform/Translator.h"
#include "sources/ClientInterface.h"
#include "sources/ConsoleEvents.h"

namespace kalvex::console {

// What the console needs of the process that it stands in, and what it shows there.
class ClientHost : public ScriptHost {
  public:
    virtual void MinimiseFrame(engine::CKalvexDoc& document) = 0;
    // A row of the script's variables has changed, or all of them for -1.
    virtual void ShowVariables(engine::CKalvexDoc& document, int row) = 0;
    virtual void ShowMessage(std::string_view text) = 0;
    // The connection has come up or broken.
    virtual void UpdateTitle() = 0;
    virtual void ClearLog() = 0;
    // A line of the module's log.
    virtual void LogFromModule(std::string_view text, std::int64_t time, int level) = 0;
    // The level of the module, to be known here.
    virtual void TakeLogLevel(int level) = 0;
    virtual const std::string& GetClientIdentity() const = 0;
};

// All of it outlives the console.
struct ClientServices {
    platform::LogSink& log;
    const platform::Translator& translator;
    platform::Questions& questions;  // asked between two works of the loop, or within a command
    platform::MainLoop& loop;
    sources::CClientInterface& sources;
    ClientHost& host;
    std::string module;  // the source to mirror
};

class ClientConsole final : public engine::ConsoleLink, public sources::ConsoleEvents {
  public:
    explicit ClientConsole(ClientServices services) : m_services(std::move(services)) {}
    ClientConsole(const ClientConsole&) = delete;
    ClientConsole& operator=(const ClientConsole&) = delete;

    // Begins to listen to the module; from here on, as long as it lives, the sources tell this.
    void Open();
    bool IsConnected() const { return m_services.sources.IsConnected(m_services.module); }

    // ---- scripts, as the person opens, saves and closes them

    // Null when the file is open already, which is told, or does not open.
    engine::CKalvexDoc* OpenByHand(std::string_view path);
    // Before the document is destroyed: the module is told to close the script as well.
    void OnClosing(const engine::CKalvexDoc& document);
    void OnSaved(engine::CKalvexDoc& document) override;
    void OnMinimised(engine::CKalvexDoc& document, bool minimised);

    // ---- sessions

    // Of a script whose session is not here; nothing happens to another.
    void AskForSession(engine::CKalvexDoc& document);

    // ---- orders to the module; those about a script's run and breakpoints only with its session

    void SendCommand(std::string_view documentKey, engine::ConsoleCommand command) override;
    void SendLine(std::string_view, int) override {}
    void SendState(std::string_view, engine::ConsoleStateMessage, int, int) override {}
    void ToggleBreakpoint(const engine::CKalvexDoc& document, int line);
    void RemoveBreakpoints(const engine::CKalvexDoc& document);
    // The person has put so many lines before that line, or has deleted so many from it on.
    void OnLinesInserted(const engine::CKalvexDoc& document, int line, int count);
    void OnLinesDeleted(const engine::CKalvexDoc& document, int line, int count);
    // False when no message can carry the value: its text is empty or has a tab in it.
    bool SetVariable(const engine::CKalvexDoc& document, std::string_view name,
                     const value::CVal& value);
    void AskForVariable(const engine::CKalvexDoc& document, std::string_view name);
    void AskForVariables(const engine::CKalvexDoc& document);
    // The module sets its level and publishes it; nothing without a connection.
    void SendLogLevel(int level);

    // ---- from the sources

    void OnHeldValue(std::string_view variable, const value::CVal& value) override;
    void OnControlValue(std::string_view variable, const value::CVal& value) override;
    void OnConnected(std::string_view source) override;
    void OnConnectionLost(std::string_view source) override;
    void OnModuleLog(int level, std::int64_t time, std::string_view text) override;

  private:
    struct Variable {
        ControlKind kind;
        std::string path;
    };
    struct Message {
        MessageFields fields;
        engine::CKalvexDoc& document;
    };
    struct MessageRow;
    static const MessageRow kMessages[];

    void OnDocumentInfo(std::string_view notice);
    void CloseFor(engine::CKalvexDoc& document);
    void Mirror(std::string_view path);
    void OnMessage(const Variable& variable, std::string_view text);
    void OnLine(const Variable& variable, const value::CVal& value);

    // The messages of the module and of other consoles, one by one.
    void AskSession(const Message& message);
    void PassSession(const Message& message);
    void Started(const Message& message);
    void Stopped(const Message& message);
    void WasReset(const Message& message);
    void BreakpointSet(const Message& message);
    void BreakpointRemoved(const Message& message);
    void BreakpointsRemoved(const Message& message);
    void SessionHeld(const Message& message);
    void VariableValues(const Message& message);

    void HandOver(engine::CKalvexDoc& document, std::string_view asking, bool force);
    void HandOverAsked(const std::string& path, const std::string& asking);
    void ForceAsked(const std::string& path, const std::string& holder);
    void GiveUp(engine::CKalvexDoc& document);
    void PassTo(engine::CKalvexDoc& document, std::string_view asking);
    void Lose(engine::CKalvexDoc& document);

    void RegisterVariables(const std::string& path);
    void UnregisterVariables(const std::string& path);
    void Write(std::string_view variable, const value::CVal& value);
    void WriteOf(ControlKind kind, const std::string& path, const value::CVal& value);
    void SendText(const std::string& path, const std::string& text);
    void SendBreakpoint(const engine::CKalvexDoc& document, MessageCode code, int line);
    // A question stops whoever asks it, and the script may be closed meanwhile; so it is asked when
    // the message that brings it has been handled.
    void Later(std::function<void()> work);
    bool Ask(const char* question, std::initializer_list<std::string_view> arguments);

    const ClientServices m_services;
    std::map<std::string, Variable, std::less<>> m_variables;  // of scripts, registered; by name
    std::set<std::string> m_asked;  // scripts whose session this side has asked for
    const std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

}  // namespace kalvex::console
