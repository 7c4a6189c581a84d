#include "support/hand_server.h"

#include <new>

#include "support/value_dump.h"

namespace kalvex::support {

namespace {

class HandSession final : public vantrel::ServerSession {
  public:
    HandSession(HandServer& server, vantrel::ServerLink& link) : m_server(server), m_link(link) {}

    void OnMessage(vantrel::ClientMessage message) override {
        if (m_server.lacksMemory) throw std::bad_alloc();
        m_server.heard.push_back(Describe(message));
        const auto* subscription = std::get_if<vantrel::SubscribeRequest>(&message);
        if (subscription != nullptr) m_server.wishes = subscription->flags;
        if (const auto* writes = std::get_if<vantrel::ModifyRequests>(&message)) {
            for (const vantrel::ModifyRequest& write : writes->requests)
                m_server.serials.push_back(write.serial);
        }
        if (const auto* archive = std::get_if<vantrel::ArchiveModifyRequest>(&message))
            m_server.serials.push_back(archive->serial);
        if (const auto* order = std::get_if<vantrel::PeriodRequest>(&message))
            m_server.serials.push_back(order->serial);
        if (const auto* acknowledgements = std::get_if<vantrel::AcknowledgeRequests>(&message)) {
            for (const vantrel::AcknowledgeRequest& request : acknowledgements->requests)
                m_server.serials.push_back(request.serial);
        }
        const auto* login = std::get_if<vantrel::LoginRequest>(&message);
        if (login == nullptr) return;
        m_server.logins.push_back(*login);
        if (m_server.answersLogin) m_link.Send(m_server.loginResult);
    }

    void OnClosed(std::uint32_t reason) override {
        m_server.heard.push_back("closed " + std::to_string(reason));
        if (m_server.link == &m_link) m_server.link = nullptr;
    }

    void OnDrained() override { m_server.heard.push_back("drained"); }

  private:
    HandServer& m_server;
    vantrel::ServerLink& m_link;
};

std::string Text(std::int64_t number) {
    return std::to_string(number);
}

struct Describer {
    std::string operator()(const vantrel::LoginRequest& message) const {
        return "login " + message.user + "/" + std::string(message.password.View()) + " " +
               message.clientName + " " + Text(message.moduleType);
    }
    std::string operator()(const vantrel::SubscribeRequest& message) const {
        std::string text = "subscribe";
        for (const auto& entry : message.added) text += " +" + Text(entry.handle) + entry.name;
        for (const vantrel::VariableHandle handle : message.removed) text += " -" + Text(handle);
        return text;
    }
    std::string operator()(const vantrel::ReadRequests& message) const {
        std::string text = "read";
        for (const vantrel::ReadRequest& request : message.requests) {
            text += " " + Text(request.id) + ":" + Text(request.kind) + request.variable + "[" +
                    Text(request.from) + ".." + Text(request.to) + "]";
            if (request.points != 0) text += "/" + Text(request.points);
        }
        return text;
    }
    std::string operator()(const vantrel::CancelRequests& message) const {
        std::string text = "cancel";
        for (const vantrel::RequestId id : message.ids) text += " " + Text(id);
        return text;
    }
    std::string operator()(const vantrel::ModifyRequests& message) const {
        std::string text = "modify";
        for (const vantrel::ModifyRequest& request : message.requests) {
            text += " " + Text(request.id) + ":" + Text(request.kind) + request.variable + "[" +
                    Text(request.time) + "]=" + Describe(request.value);
        }
        return text;
    }
    std::string operator()(const vantrel::ArchiveModifyRequest& message) const {
        std::string text = "archive " + Text(message.id) + ":" + message.variable + "[" +
                           Text(message.from) + ".." + Text(message.to) + "]";
        for (const value::CVal& value : message.values) text += " " + Describe(value);
        return text;
    }
    std::string operator()(const vantrel::PeriodRequest& message) const {
        return "period " + Text(static_cast<int>(message.action)) + ":" + Text(message.kind) +
               message.variable + "[" + Text(message.time) + "]";
    }
    std::string operator()(const vantrel::LastMessagesRequest& message) const {
        return "last " + Text(message.count);
    }
    std::string operator()(const vantrel::TakeTerm& message) const {
        return "take term " + std::to_string(message.term);
    }
    std::string operator()(const vantrel::AcknowledgeRequests& message) const {
        std::string text = "acknowledge";
        for (const vantrel::AcknowledgeRequest& request : message.requests) {
            text += " " + Text(request.id) + ":" + request.variable;
        }
        return text;
    }
};

}  // namespace

std::string Describe(const vantrel::ClientMessage& message) {
    return std::visit(Describer(), message);
}

std::unique_ptr<vantrel::ServerSession> HandServer::Accept(vantrel::ServerLink& newLink) {
    if (!accepts) return nullptr;
    ++clients;
    link = &newLink;
    return std::make_unique<HandSession>(*this, newLink);
}

void HandServer::ListVariables(vantrel::LoginRequest login, std::string address,
                               std::weak_ptr<const void>, ListAnswer answer) {
    heard.push_back("list " + login.user + (address.empty() ? "" : " from " + address));
    if (!answersList) {
        listAnswer = std::move(answer);
    } else if (lists) {
        answer(definitions);
    } else {
        answer(std::nullopt);
    }
}

vantrel::CVarVal& HeardConnection::RegisterVariable(std::string_view name, const Owner* owner) {
    owners.emplace(name, owner);
    return RegisterVariable(name);
}

void HeardConnection::UnRegisterVariable(const std::string& name, const Owner* owner) {
    std::erase_if(owners,
                  [&](const auto& bound) { return bound.first == name && bound.second == owner; });
    vantrel::CClientConnection::UnRegisterVariable(name);
}

bool HeardConnection::IsVarInUse(const vantrel::CVarVal& variable) const {
    return owners.count(variable.GetName()) != 0;
}

void HeardConnection::OnConnectionFault(vantrel::ConnectionFault fault, std::uint32_t code) {
    events.push_back("fault " + Text(static_cast<int>(fault)) + " " + Text(code));
}

void HeardConnection::OnServerAccess(bool denied, std::string_view text) {
    events.push_back((denied ? "denied " : "access ") + std::string(text));
}

void HeardConnection::OnConnect() {
    events.push_back("connect");
}

void HeardConnection::OnDisconnect(std::uint32_t reason) {
    events.push_back("disconnect " + Text(reason));
    vantrel::CClientConnection::OnDisconnect(reason);
}

void HeardConnection::OnVariableList() {
    events.push_back("variables");
}

void HeardConnection::OnDataArrived() {
    events.push_back("data");
}

void HeardConnection::OnVarAccessError(const vantrel::RequestRecord& record) {
    events.push_back("no access " + record.variable + " " + Text(record.result));
}

void HeardConnection::OnCurrentDataModifyAck(const vantrel::RequestRecord& record) {
    events.push_back("written " + record.variable + " " + Describe(record.value));
}

void HeardConnection::OnCurrentDataModifyError(const vantrel::RequestRecord& record) {
    events.push_back("not written " + record.variable + " " + Text(record.result));
}

void HeardConnection::OnReportModifyError(value::ValueKind kind,
                                          const vantrel::RequestRecord& record) {
    events.push_back("report not written " + Text(kind) + record.variable + " " +
                     Text(record.result));
}

void HeardConnection::OnArchiveModifyError(const vantrel::RequestRecord& record) {
    events.push_back("archive not written " + record.variable + " " + Text(record.result));
}

void HeardConnection::OnPeriodError(vantrel::PeriodAction action, value::ValueKind kind,
                                    const vantrel::RequestRecord& record) {
    events.push_back("order not done " + Text(static_cast<int>(action)) + ":" + Text(kind) +
                     record.variable + " " + Text(record.result));
}

void HeardConnection::OnAcknowledgement(const vantrel::RequestRecord& record) {
    events.push_back("acknowledged " + record.variable + " " + Text(record.result));
}

void HeardConnection::OnOrderLost(const vantrel::LostOrder& order) {
    static const std::map<vantrel::LossReason, std::string> words = {
        {vantrel::LossReason::NotConnected, "lost "},
        {vantrel::LossReason::QueueFull, "lost, as too many wait, "},
        {vantrel::LossReason::Unanswered, "lost unanswered "},
    };
    std::string text = words.at(order.reason);
    if (order.action) text += "period " + Text(static_cast<int>(*order.action)) + ":";
    text += Text(order.kind) + order.variable + "[" + Text(order.time) + "]";
    for (const value::CVal& value : order.values) text += " " + Describe(value);
    events.push_back(text);
}

void HeardConnection::OnReportChange(value::ValueKind kind, std::int64_t time) {
    events.push_back("report changed " + Text(kind) + " " + Text(time));
}

void HeardConnection::OnRemoteLogMessage(int level, std::int64_t time, std::string_view text) {
    events.push_back("log " + Text(level) + " " + Text(time) + " " + std::string(text));
}

void HeardWindow::OnAnswer(value::ValueKind kind, vantrel::RequestRecord record) {
    std::string text = Text(kind) + record.variable + " " + Text(record.result);
    if (record.list != nullptr) {
        text += " [";
        for (std::size_t i = 0; i < record.list->GetSize(); ++i) {
            text += (i == 0 ? "" : " ") + Describe(*record.list->Get(i));
        }
        text += "]";
    } else {
        text += " " + Describe(record.value);
    }
    answers.push_back(text);
}

void HeardJournal::Record(const vantrel::CClientConnection& connection,
                          vantrel::JournalEntry entry) {
    std::string text = connection.GetServerName() + " " + entry.operation;
    if (entry.variable) text += " variable=" + *entry.variable;
    if (entry.from) text += " from=" + Text(*entry.from);
    if (entry.to) text += " to=" + Text(*entry.to);
    if (entry.time) text += " time=" + Text(*entry.time);
    if (entry.id) text += " id=" + Text(*entry.id);
    if (entry.value) text += " value=" + Describe(*entry.value);
    if (entry.values) text += " values=" + Text(static_cast<std::int64_t>(entry.values->size()));
    if (entry.list) text += *entry.list ? " list" : " no list";
    entries.push_back(text);
}

}  // namespace kalvex::support
