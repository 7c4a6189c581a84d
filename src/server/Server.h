// The data server below its transport: it answers the sessions of its clients, moves the plant once
// a second and keeps everything in the store. Main thread.
//
// Transports are made with the server as their acceptor, and are gone before the server stops.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Clock.h"
#include "platform/FileLock.h"
#include "platform/LogSink.h"
#include "platform/MainLoop.h"
#include "platform/Translator.h"
#include "platform/UserStore.h"
#include "server/AutomaticReports.h"
#include "server/ConfirmedTime.h"
#include "server/Definitions.h"
#include "server/FreeSpace.h"
#include "server/Health.h"
#include "server/LateReports.h"
#include "server/Plant.h"
#include "server/PlantAlarms.h"
#include "server/Recorder.h"
#include "server/ReportChanges.h"
#include "server/Rights.h"
#include "server/Rollups.h"
#include "server/Store.h"
#include "server/WriteAnswers.h"
#include "vantrel/ConversationSlots.h"
#include "vantrel/LoginDesk.h"
#include "vantrel/Refusals.h"
#include "vantrel/Transport.h"

namespace kalvex::server {

class Session;

class Server final : public vantrel::SessionAcceptor {
  public:
    // All outlive the server. The cost is that of the users' passwords.
    Server(const platform::Clock& clock, platform::LogSink& log,
           const platform::Translator& translator, platform::MainLoop& loop,
           platform::PasswordCost cost = platform::PasswordCost::Interactive,
           const StoreSettings& store = {});
    ~Server() override;
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // Reads the configuration and opens store and users. False, with lines for people (UTF-8), when
    // any of it fails. Called once.
    bool Start(const std::string& configuration, std::vector<std::string>& errors);

    // Reads the configuration again. What is wrong with it goes to the log, and nothing changes.
    void Reload();

    // To be called at least once a second.
    void Tick();

    // Commits everything. The last call.
    void Stop();

    const Definitions& Settings() const { return m_definitions; }

    ServerFigures Figures();
    // Writes them to the log, whatever its level.
    void LogHealth();

    // ---- for the transport

    // The session is counted until it is destroyed. For one too many, one without a login is sent
    // away; without such a one it is refused.
    std::unique_ptr<vantrel::ServerSession> Accept(vantrel::ServerLink& link) override;

    void ListVariables(vantrel::LoginRequest login, std::string address,
                       std::weak_ptr<const void> asker, ListAnswer answer) override;

    // ---- for the sessions

    std::int64_t Now() const { return m_clock.Now(); }
    std::int64_t Elapsed() const { return m_clock.Elapsed(); }
    std::int64_t Confirmed() const { return m_confirmed.At(Now(), Elapsed()); }
    Plant& GetPlant() { return m_plant; }
    PlantAlarms& GetAlarms() { return m_alarms; }
    Store& GetStore() { return m_store; }
    vantrel::LoginDesk& GetLogins() { return *m_logins; }
    vantrel::ConversationSlots& GetSlots() { return m_slots; }
    const Rights& GetRights() const { return m_rights; }
    const ReportChanges& GetReportChanges() const { return m_reportChanges; }
    WriteAnswers& GetWriteAnswers() { return m_writeAnswers; }
    const platform::Translator& GetTranslator() const { return m_translator; }
    void Log(const std::string& text, int level);  // an engine text
    // The translation with the values (engine texts) in its places.
    void Log(const char* polish, std::initializer_list<std::string_view> values, int level);
    // `user` as the client gave it, `client` as the log names it.
    void LogLogin(const vantrel::LoginVerdict& verdict, std::string_view user,
                  const std::string& client, const std::string& address);
    std::deque<vantrel::LogMessage> LastMessages(std::size_t count) const;

    // The session of that number, or null when it is gone.
    Session* FindSession(std::uint64_t number) const;
    void Forget(const Session& session);

    // Archives the values that have been set, with what they have made of alarms, and sends them to
    // their subscribers.
    void Distribute();

    // False while too much waits to be written; the log is told of it once until all is written.
    bool TakesWrites();

    // Adds the mark of the report above what a client is about to change.
    void MarkLate(const PlantVariable& variable, value::ValueKind kind, std::int64_t time,
                  std::vector<StoreOperation>& operations);

    // Writes what a client has asked for, behind all that was recorded before. `done` is called
    // when it is on disk. Only after TakesWrites.
    void Write(std::vector<StoreOperation> operations, std::function<void()> done);

  private:
    void OnOutcome(const StoreOutcome& outcome);  // takes down what has changed
    void OnTrouble(const StoreTrouble& trouble);
    void OnLoss(const ValueLoss& loss);
    bool OpenFiles(std::vector<std::string>& errors);
    bool CloseFilesToOthers(std::vector<std::string>& errors);
    void Define();
    void StepTime();
    void WatchFreeSpace();
    std::vector<vantrel::VariableDefinition> DefinitionsFor(const platform::UserRecord& user,
                                                            const std::string& address) const;

    const platform::Clock& m_clock;
    platform::LogSink& m_log;
    const platform::Translator& m_translator;
    platform::MainLoop& m_loop;
    const platform::PasswordCost m_cost;
    std::string m_configuration;
    Definitions m_definitions;
    Rights m_rights;
    platform::FileLock m_lock;
    platform::UserStore m_users;
    Store m_store;
    std::unique_ptr<vantrel::LoginDesk> m_logins;
    Plant m_plant;
    PlantAlarms m_alarms;
    Recorder m_recorder;
    AutomaticReports m_automatic;
    LateReports m_late;
    Rollups m_rollups;
    std::map<std::uint64_t, Session*> m_sessions;
    std::uint64_t m_lastSession = 0;
    vantrel::ConversationSlots m_slots;
    vantrel::Refusals m_refusals;
    ReportChanges m_reportChanges;
    WriteAnswers m_writeAnswers;
    std::deque<vantrel::LogMessage> m_lastMessages;
    bool m_refusesWrites = false;
    bool m_started = false;
    ConfirmedTime m_confirmed;
    FreeSpace m_freeSpace;
    const std::int64_t m_startedAt;  // elapsed seconds
    std::optional<std::int64_t> m_lastTick;
};

}  // namespace kalvex::server
