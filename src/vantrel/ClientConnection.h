// A client's connection to one data server: login, subscription, requests. What happens on it is
// told to virtual hooks, which a module overrides. Main thread.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "vantrel/Codes.h"
#include "vantrel/Requests.h"
#include "vantrel/Transport.h"
#include "vantrel/VarVal.h"

namespace kalvex::vantrel {

enum ConnectionState : std::uint16_t {
    StateDown = 0,     // out of reach; reads fail at once, orders are lost, which OnOrderLost tells
    StateOpening = 1,  // requests are kept until the attempt has ended
    StateLogin = 2,    // the same
    StateConnected = 3,
};

class CClientConnection : private ClientTransportEvents {
  public:
    CClientConnection() = default;
    ~CClientConnection() override = default;
    CClientConnection(const CClientConnection&) = delete;
    CClientConnection& operator=(const CClientConnection&) = delete;

    // Begins to connect to the source of that name. False, after OnConnectionFault(Create), when
    // there is no way to a source of that name. The journal may be null.
    bool Create(std::uint16_t moduleType, std::string_view source, std::string_view clientName,
                TransportFactory& transports, RequestJournal* journal);

    std::uint16_t GetState() const { return m_state; }
    const std::string& GetServerName() const { return m_server; }
    static std::string GetErrorInfo(std::uint32_t code, const platform::Translator& translator) {
        return ConnectionReasonText(code, translator);
    }

    void SetLoginData(std::string_view user, std::string_view password);
    virtual void GetLoginData(std::string& user, platform::Secret& password) const;

    // Logs in anew, as after a change of the user.
    void Login();
    // Periodic work, about once a second.
    void CheckConnection();

    // ---- variables

    // The variable's local object, made when it is new; the server is asked at the next Subscribe.
    CVarVal& RegisterVariable(std::string_view name);
    // A variable that is not in use goes at the next Subscribe unless it is registered again.
    void UnRegisterVariable(std::string_view name);
    // Brings the server's subscription into line with the registered variables.
    void Subscribe();

    CVarVal* GetVarVal(std::string_view name) const;  // null when it is not registered
    // The variable is part of what the server is asked to send.
    bool IsSubscribed(std::string_view name) const;
    CVarVal& GetVarVal(int index) const { return *m_arrVariables[index]->pVarVal; }
    int GetMaxVarValIndex() const { return static_cast<int>(m_arrVariables.size()) - 1; }

    // Null before the definition has come.
    const CVarDefInfo* GetVarDefInfo(std::string_view name) const;
    // All variables of the server in its order; false when they are not to be had. May wait.
    bool LoadVarDefList(CObjInfoList& list);
    // The same without waiting: `done` hears of them, or of nothing when they are not to be had,
    // from within the call or later; never once the connection has gone.
    void AskVarDefList(std::function<void(std::optional<CObjInfoList>)> done);

    // ---- requests: "Add" queues, "Make" sends what is queued of that kind. The operations of the
    // five report and archive kinds differ by `kind` alone; each has its own queue.

    // Reads the value at `from` when there is no list, otherwise the values from `from` to `to`
    // into the list. The answer comes to the window, which, like the list, must last until then or
    // until the request is cancelled. Of very many reads the later ones are held back until the
    // server has answered the earlier. `points` as in ReadRequest.
    RequestId AddDataRequest(value::ValueKind kind, std::string_view variable, std::int64_t from,
                             std::int64_t to, value::CArchiveValueList* list, AnswerWindow& window,
                             std::uint32_t points = 0);
    void MakeDataRequest(value::ValueKind kind);
    // No answer comes any more.
    void CancelDataRequest(value::ValueKind kind, RequestId id);

    // Writes and orders reach the server in the order in which they were made; of very many the
    // later ones are held back until the earlier are answered. What a break leaves without an
    // answer is sent again when the connection is up, before what is made then, and done once
    // nevertheless; or, where SendsWritesAgain says so, is lost.

    // Sent by MakeDataRequest. A refusal comes to OnReportModifyError.
    void AddReportModifyRequest(value::ValueKind kind, std::string_view variable, std::int64_t time,
                                value::CVal value);
    // Orders a piece of work. A refusal comes to OnPeriodError.
    void MakePeriodRequest(PeriodAction action, value::ValueKind kind, std::string_view variable,
                           std::int64_t time);

    // A list that is too long for one write goes in several, each of them taken or refused as a
    // whole. A refusal comes to OnArchiveModifyError.
    void AddArchiveModifyRequest(std::string_view variable, const value::CArchiveValueList& list,
                                 value::TIMEW from, value::TIMEW to);
    void MakeArchiveModifyRequest();

    void AddCurrentDataModifyRequest(std::string_view variable, value::CVal value);
    void MakeCurrentDataModifyRequest();

    // Acknowledges all alarms of the variable that have been so far, in turn with the writes. The
    // answer comes to OnAcknowledgement.
    void Acknowledge(std::string_view variable);

    // Writes and orders that the server has not answered yet.
    std::size_t WritesWaiting() const { return m_writes.size(); }

  protected:
    // ---- hooks

    virtual std::unique_ptr<CVarVal> CreateVarVal(std::string_view name);
    virtual bool IsVarInUse(const CVarVal& variable) const;
    // What a subscription of the variable asks for; SubscribeFlag names the bits that matter.
    virtual std::uint32_t GetSubscribeFlags(const CVarVal& variable) const;

    // False where a write that comes late does harm: what a break leaves without an answer goes to
    // OnOrderLost instead, before OnDisconnect.
    virtual bool SendsWritesAgain() const { return true; }

    virtual void OnConnectionFault(ConnectionFault fault, std::uint32_t code);
    // The server's answer to the login.
    virtual void OnServerAccess(bool denied, std::string_view text);
    virtual void OnConnect();
    // The base marks all values and answers all outstanding reads with ResultNothing.
    virtual void OnDisconnect(std::uint32_t reason);
    // Definitions have come, or have gone: those that GetVarDefInfo does not give any more are not
    // to be used from now on.
    virtual void OnVariableList();
    // Values have been set, those of a whole subscription at once.
    virtual void OnDataArrived();
    // A subscribed variable is not there, or not any more; its value and its definition are gone.
    // Should it come back, both are sent.
    virtual void OnVarAccessError(const RequestRecord& record);
    virtual void OnCurrentDataModifyAck(const RequestRecord& record);
    virtual void OnCurrentDataModifyError(const RequestRecord& record);
    virtual void OnReportModifyError(value::ValueKind kind, const RequestRecord& record);
    virtual void OnArchiveModifyError(const RequestRecord& record);
    virtual void OnPeriodError(PeriodAction action, value::ValueKind kind,
                               const RequestRecord& record);
    virtual void OnAcknowledgement(const RequestRecord& record);
    virtual void OnOrderLost(const LostOrder& order);
    virtual void OnReportChange(value::ValueKind kind, std::int64_t time);
    virtual void OnRemoteLogMessage(int level, std::int64_t time, std::string_view text);

  private:
    struct Registration {
        std::unique_ptr<CVarVal> pVarVal;
        VariableHandle handle = 0;  // 0 until it is subscribed
        std::size_t index = 0;
        bool dropped = false;  // goes at the next Subscribe
        bool touched = false;  // stands in m_touched
        bool told = false;     // in this conversation the server has sent what it holds
    };

    struct PendingRead {
        ReadRequest request;
        value::CArchiveValueList* list;
        AnswerWindow* window;
        value::CArchiveValueList values;
        bool sent = false;
    };

    using WriteRequest =
        std::variant<ModifyRequest, ArchiveModifyRequest, PeriodRequest, AcknowledgeRequest>;

    struct PendingWrite {
        WriteRequest request;
        std::size_t bytes;
    };

    // Stands among messages for the writes up to a serial.
    struct WriteTurn {
        std::uint64_t upTo = 0;
    };

    void OnOpened() override;
    void OnMessage(ServerMessage message) override;
    void OnFault(ConnectionFault fault, std::uint32_t reason) override;
    void OnClosed(std::uint32_t reason) override;

    void Receive(LoginResult& message);
    void Receive(VariableDefinitions& message);
    void Receive(ValueUpdates& message);
    void Receive(AccessErrors& message);
    void Receive(ReadAnswer& message);
    void Receive(ModifyResults& message);
    void Receive(ReportChange& message);
    void Receive(LogMessage& message);
    void Receive(TermResult&) {}

    void Open();
    void GoDown();
    LoginRequest MakeLoginRequest() const;
    void SubscribeAll();
    void Touch(Registration& registration);
    void Forget(Registration& registration);
    void MarkVarValError();
    void MakeWrites(value::ValueKind kind);
    void AddWrite(WriteRequest request);
    void Lose(WriteRequest request, LossReason reason);
    // What has been added goes when it is its turn.
    void ReleaseWrites();
    void SendWrites();
    bool IsAnswered(const PendingWrite& write) const;
    PendingWrite Forget(std::uint64_t serial);
    void SendReads();
    PendingRead TakeRead(RequestId id);
    void FinishRead(RequestId id, std::uint16_t result);
    void FinishWrite(RequestId id, std::uint16_t result);
    void TellWrite(const WriteRequest& request, std::uint16_t result);
    // The conversation, or the attempt to open one, has ended.
    void HoldWrites(bool wasConnected);
    void FailOutstanding();
    void SendOutbox();
    void Send(ClientMessage message);
    void Record(JournalEntry entry) const;

    std::string m_server;
    std::string m_client;
    std::string m_userName;
    platform::Secret m_password;
    std::uint16_t m_moduleType = 0;
    std::uint16_t m_state = StateDown;
    bool m_openFaultTold = false;  // the first of a row of failed attempts has been reported
    bool m_openAgain = false;      // closed to be opened again
    int m_checksToLogin = 0;       // until a refused login is tried again
    RequestJournal* m_journal = nullptr;

    std::vector<std::unique_ptr<Registration>> m_arrVariables;
    std::unordered_map<std::string_view, Registration*> m_byName;  // keys live in the objects
    std::unordered_map<VariableHandle, Registration*> m_byHandle;
    std::vector<Registration*> m_touched;
    VariableHandle m_lastHandle = 0;
    std::unordered_map<std::string, CVarDefInfo> m_definitions;

    RequestId m_lastRequest = 0;
    std::map<RequestId, PendingRead> m_reads;
    std::map<std::uint64_t, PendingWrite> m_writes;  // without an answer, by their serials
    std::unordered_map<RequestId, std::uint64_t> m_serials;
    std::map<value::ValueKind, std::vector<RequestId>> m_queuedReads;
    std::deque<RequestId> m_readsToSend;  // held back while enough of them are under way
    std::size_t m_readsUnderWay = 0;
    std::map<value::ValueKind, ModifyRequests> m_queuedWrites;
    std::vector<ArchiveModifyRequest> m_queuedArchives;
    std::uint64_t m_lastSerial = 0;
    std::uint64_t m_lastReleased = 0;  // later ones wait for their turn
    std::uint64_t m_lastSent = 0;      // in this conversation
    std::size_t m_writesUnderWay = 0;
    std::size_t m_writeBytesUnderWay = 0;
    std::size_t m_writeBytes = 0;
    std::size_t m_ordersUnderWay = 0;  // of those that are not answered
    bool m_answersOrders = false;      // the server of this conversation
    // Waits for the connection to come up, or for writes that are held back.
    std::deque<std::variant<ClientMessage, WriteTurn>> m_outbox;
    std::string m_token;
    std::optional<std::uint64_t> m_lastChange;  // the sequence of the last report change

    std::unique_ptr<ClientTransport> m_transport;  // the first to go
};

}  // namespace kalvex::vantrel
