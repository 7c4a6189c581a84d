// One client at the data server: its login, what it has subscribed, its requests. Main thread.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/UserDirectory.h"
#include "server/Plant.h"
#include "server/Refusal.h"
#include "server/Rights.h"
#include "server/Store.h"
#include "vantrel/Codes.h"
#include "vantrel/LoginDesk.h"
#include "vantrel/Transport.h"

namespace kalvex::server {

class Server;

class Session final : public vantrel::ServerSession {
  public:
    // The server outlives the session. The number is given once.
    Session(Server& server, vantrel::ServerLink& link, std::uint64_t number);
    ~Session() override;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void OnMessage(vantrel::ClientMessage message) override;
    void OnClosed(std::uint32_t reason) override;
    void OnDrained() override;

    // ---- from the server

    std::uint64_t Number() const { return m_number; }
    bool IsLoggedIn() const { return m_state == State::LoggedIn; }
    std::size_t SubscriptionCount() const { return m_subscriptions.size(); }
    void OnLogin(const vantrel::LoginVerdict& verdict);

    // The variables or the rights have been defined anew: what had been subscribed is answered
    // again.
    void OnDefine();

    // The value of a subscribed variable has changed; SendChanges tells the client of all of these,
    // unless it has not taken the last ones yet.
    void MarkChanged(vantrel::VariableHandle handle);
    void SendChanges();

    // What has changed since it was told last, as fast as the client takes it.
    void SendReportChanges();
    // Once an hour: how often the refusals that the log has had have come again.
    void TellRefusals(std::int64_t now);
    void SendLog(const vantrel::LogMessage& message);

    // Ends a conversation in which nobody has logged in since.
    void CloseUnlessLoggedIn(std::int64_t acceptedBefore);
    // Ends a conversation in which nobody has logged in.
    void SendAway();

  private:
    enum class State { New, Checking, LoggedIn };

    struct Subscription {
        std::string name;
        VariableId variable = 0;  // 0 while there is nothing to be seen under that name
        bool marked = false;
    };

    struct Reading {
        StoreQuery query;
        bool single = false;  // one report, whose absence is a failure
    };

    void Receive(vantrel::LoginRequest& message);
    void Receive(vantrel::SubscribeRequest& message);
    void Receive(vantrel::ReadRequests& message);
    void Receive(vantrel::CancelRequests& message);
    void Receive(vantrel::ModifyRequests& message);
    void Receive(vantrel::ArchiveModifyRequest& message);
    void Receive(vantrel::PeriodRequest& message);
    void Receive(vantrel::LastMessagesRequest& message);
    void Receive(vantrel::TakeTerm& message);
    void Receive(vantrel::AcknowledgeRequests& message);

    // A write, or an order for a period, on its way.
    struct Order {
        vantrel::RequestId id = 0;
        std::uint64_t serial = 0;
        value::ValueKind kind = value::KindNone;
        std::string variable;
        std::optional<vantrel::PeriodAction> action = {};  // none: a write
        bool answered = true;
        bool acknowledges = false;                    // alarms: neither a write nor for a period
        std::optional<std::uint16_t> alarmBits = {};  // of a current value, as they were written
    };

    std::string Peer() const;  // the client's name and address for the log
    // To the log, once; the variable is one of the server's, so that the texts stay few.
    void TellOnce(const char* polish, std::string_view variable = {});
    Rights::Granted RightsTo(std::size_t variable) const;

    // Ties the subscriptions to their variables and tells the client of each what it may know of
    // it, but for the value. The answer are the handles that have one.
    std::vector<vantrel::VariableHandle> Bind(const std::vector<vantrel::VariableHandle>& handles);
    void SendValues(const std::vector<vantrel::VariableHandle>& handles, bool last);
    // Whether the client may know that there is a variable in that place of the list, kNone too.
    bool Sees(std::size_t variable) const;
    bool HasRoomForAbsent(std::string_view name) const;
    void AddAbsent(const std::string& name, vantrel::VariableHandle handle);
    void DropAbsent(const std::string& name, vantrel::VariableHandle handle);
    void Release(vantrel::VariableHandle handle, Subscription& subscription);

    std::uint16_t CheckRead(VariableId id) const;
    std::uint16_t StartReading(const vantrel::ReadRequest& request);
    void ReadNext();
    std::optional<vantrel::RequestId> TakeNextRead();
    void DropRead(vantrel::RequestId id);
    void OnPiece(vantrel::RequestId id, StorePiece piece);

    // Whether the serial has not come before. If it has, its answer goes to `decided`, or to the
    // client once there is one.
    bool IsNew(vantrel::RequestId id, std::uint64_t serial, vantrel::ModifyResults& decided);
    static bool HasAnswer(const std::string& token, std::uint64_t serial) {
        return serial != 0 && !token.empty();
    }
    Refusal CheckWrite(value::ValueKind kind, std::string_view name, std::size_t& variable) const;
    Refusal Acknowledge(std::string_view name);
    Refusal PrepareModify(vantrel::ModifyRequest& request, std::vector<StoreOperation>& operations);
    Refusal PrepareArchive(vantrel::ArchiveModifyRequest& request,
                           std::vector<StoreOperation>& operations, std::size_t& good);
    // `good` values stand before the bad one, if it is one.
    std::string ArchiveReason(Refusal refusal, std::size_t good, std::size_t count) const;
    Refusal PreparePeriod(const vantrel::PeriodRequest& request,
                          std::vector<StoreOperation>& operations);
    Origin OriginNow();  // of what the client writes
    void Correct(std::string_view name);

    // An order that is not carried out, with the words for why: to the log. The answer is the
    // caller's.
    void TellRefused(const Order& order, std::string_view reason);
    std::string ReasonText(Refusal refusal) const;
    // Decides an order at once; its answer goes to `decided`.
    void Decide(const Order& order, std::uint16_t result, vantrel::ModifyResults& decided,
                std::vector<StoreOperation>& operations);
    // Answers the orders when the operations are committed.
    void Submit(std::vector<StoreOperation> operations, std::vector<Order> orders);
    // Who has written a current value shows it with its own alarm bits from the answer on.
    void CorrectAlarmBits(const std::vector<Order>& orders);
    static void Finish(Server& server, std::uint64_t number, const std::string& token,
                       const std::vector<Order>& orders);

    Server& m_server;
    vantrel::ServerLink& m_link;
    const std::uint64_t m_number;
    std::int64_t m_accepted;
    State m_state = State::New;
    std::string m_client;
    std::string m_userName;  // as it was given
    platform::UserRecord m_user;
    WriterId m_writer = kServerItself;       // until the client writes
    std::vector<Rights::Granted> m_granted;  // by rule
    std::uint32_t m_flags = 0;
    bool m_closing = false;
    std::shared_ptr<char> m_asker = std::make_shared<char>();  // while a login is wanted
    std::string m_token;
    std::optional<std::uint64_t> m_changesSince;    // as the login says, or its answer
    std::optional<std::uint64_t> m_lastChangeTold;  // of reports; none while nobody has asked
    std::set<std::string> m_told;                   // limits that the log has had for this client
    std::map<std::string, std::size_t> m_refusals;  // lines of the log; how often since told
    std::int64_t m_refusalsTold;

    std::unordered_map<vantrel::VariableHandle, Subscription> m_subscriptions;
    // Of those without a variable; the names are theirs.
    std::set<std::pair<std::string_view, vantrel::VariableHandle>> m_absent;
    std::size_t m_absentBytes = 0;  // of these names
    std::vector<vantrel::VariableHandle> m_marked;

    std::map<vantrel::RequestId, Reading> m_reads;
    std::deque<vantrel::RequestId> m_readQueue;  // in the order in which pieces are fetched
    bool m_reading = false;                      // a piece is being fetched
    vantrel::RequestId m_scanned = 0;            // the read that is being thinned, one at a time
};

}  // namespace kalvex::server
