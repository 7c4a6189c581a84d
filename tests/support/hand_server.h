// Servers and clients of the in-process transport, played by hand: what they hear is kept as text.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/in_process.h"
#include "vantrel/ClientConnection.h"

namespace kalvex::support {

std::string Describe(const vantrel::ClientMessage& message);

// Answers a login as it is told and leaves the rest to the test.
class HandServer final : public vantrel::SessionAcceptor {
  public:
    std::unique_ptr<vantrel::ServerSession> Accept(vantrel::ServerLink& link) override;
    void ListVariables(vantrel::LoginRequest login, std::string address,
                       std::weak_ptr<const void> asker, ListAnswer answer) override;

    // To the client that came last.
    void Send(vantrel::ServerMessage message) { link->Send(std::move(message)); }
    void SendValue(vantrel::VariableHandle handle, const value::CVal& value) {
        Send(vantrel::ValueUpdates{{{handle, value}}, true});
    }

    vantrel::ServerLink* link = nullptr;  // null when nobody is there
    int clients = 0;                      // that have come so far
    std::vector<std::string> heard;
    std::vector<vantrel::LoginRequest> logins;  // of all clients
    std::vector<std::uint64_t> serials;         // of all writes
    std::uint32_t wishes = 0;                   // the flags of the last subscription
    bool accepts = true;
    bool answersLogin = true;
    bool lacksMemory = false;  // for what a client says
    vantrel::LoginResult loginResult;
    std::vector<vantrel::VariableDefinition> definitions;
    bool lists = true;
    bool answersList = true;
    ListAnswer listAnswer;  // of the client that was not answered
};

// Keeps what its hooks are told. A variable is in use for as long as it has an owner.
class HeardConnection final : public vantrel::CClientConnection {
  public:
    struct Owner {};

    using vantrel::CClientConnection::RegisterVariable;
    vantrel::CVarVal& RegisterVariable(std::string_view name, const Owner* owner);
    void UnRegisterVariable(const std::string& name, const Owner* owner);

    std::vector<std::string> events;
    bool sendsWritesAgain = true;
    std::multimap<std::string, const Owner*> owners;

  protected:
    bool IsVarInUse(const vantrel::CVarVal& variable) const override;
    bool SendsWritesAgain() const override { return sendsWritesAgain; }
    void OnConnectionFault(vantrel::ConnectionFault fault, std::uint32_t code) override;
    void OnServerAccess(bool denied, std::string_view text) override;
    void OnConnect() override;
    void OnDisconnect(std::uint32_t reason) override;
    void OnVariableList() override;
    void OnDataArrived() override;
    void OnVarAccessError(const vantrel::RequestRecord& record) override;
    void OnCurrentDataModifyAck(const vantrel::RequestRecord& record) override;
    void OnCurrentDataModifyError(const vantrel::RequestRecord& record) override;
    void OnReportModifyError(value::ValueKind kind, const vantrel::RequestRecord& record) override;
    void OnArchiveModifyError(const vantrel::RequestRecord& record) override;
    void OnPeriodError(vantrel::PeriodAction action, value::ValueKind kind,
                       const vantrel::RequestRecord& record) override;
    void OnAcknowledgement(const vantrel::RequestRecord& record) override;
    void OnOrderLost(const vantrel::LostOrder& order) override;
    void OnReportChange(value::ValueKind kind, std::int64_t time) override;
    void OnRemoteLogMessage(int level, std::int64_t time, std::string_view text) override;
};

// Keeps the answers.
class HeardWindow final : public vantrel::AnswerWindow {
  public:
    void OnAnswer(value::ValueKind kind, vantrel::RequestRecord record) override;

    std::vector<std::string> answers;
};

// Keeps the names of the operations with their arguments.
class HeardJournal final : public vantrel::RequestJournal {
  public:
    void Record(const vantrel::CClientConnection& connection, vantrel::JournalEntry entry) override;

    std::vector<std::string> entries;
};

}  // namespace kalvex::support
