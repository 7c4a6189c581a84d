// Writes and orders of a connection: queued by "Add", sent by "Make", in order and, unless that
// would do harm, again after a break until they are answered.
#include <utility>

#include "vantrel/ClientConnection.h"
#include "vantrel/OperationName.h"

namespace kalvex::vantrel {

namespace {

// A server keeps the answers to the last thousand serials.
constexpr std::size_t kMostWritesUnderWay = 500;
constexpr std::size_t kMostBytesUnderWay = 8 << 20;
constexpr std::size_t kMostBytesWaiting = 64 << 20;

// Of orders that are remembered though the server does not answer them.
constexpr std::size_t kMostOrdersUnderWay = 1000;

// What goes into one archive write, so that a server can commit it together; a longer list goes in
// several.
constexpr std::size_t kArchiveValuesTogether = 10000;
constexpr std::size_t kArchiveBytesTogether = 1 << 20;

std::size_t BytesOf(const value::CVal& value) {
    return sizeof value + (value.IsText() ? value.Text().size() : 0);
}

std::size_t BytesOf(const ModifyRequest& request) {
    return sizeof request + request.variable.size() + BytesOf(request.value);
}

std::size_t BytesOf(const ArchiveModifyRequest& request) {
    std::size_t bytes = sizeof request + request.variable.size();
    for (const value::CVal& value : request.values) bytes += BytesOf(value);
    return bytes;
}

template <class Request>
std::size_t BytesOf(const Request& request) {
    return sizeof request + request.variable.size();
}

}  // namespace

void CClientConnection::AddReportModifyRequest(value::ValueKind kind, std::string_view variable,
                                               std::int64_t time, value::CVal value) {
    Record({.operation = OperationName("Add", kind, "Modify"),
            .variable = std::string(variable),
            .time = time,
            .value = value});
    m_queuedWrites[kind].requests.push_back(
        {++m_lastRequest, kind, std::string(variable), time, std::move(value)});
}

void CClientConnection::MakeWrites(value::ValueKind kind) {
    for (ModifyRequest& request : std::exchange(m_queuedWrites[kind], {}).requests) {
        AddWrite(std::move(request));
    }
    ReleaseWrites();
}

void CClientConnection::AddCurrentDataModifyRequest(std::string_view variable, value::CVal value) {
    Record({.operation = "AddCurrentDataModifyRequest",
            .variable = std::string(variable),
            .value = value});
    m_queuedWrites[value::KindCurrent].requests.push_back(
        {++m_lastRequest, value::KindCurrent, std::string(variable), 0, std::move(value)});
}

void CClientConnection::MakeCurrentDataModifyRequest() {
    Record({.operation = "MakeCurrentDataModifyRequest"});
    MakeWrites(value::KindCurrent);
}

void CClientConnection::AddArchiveModifyRequest(std::string_view variable,
                                                const value::CArchiveValueList& list,
                                                value::TIMEW from, value::TIMEW to) {
    JournalEntry entry{.operation = "AddArchiveModifyRequest",
                       .variable = std::string(variable),
                       .from = from.seconds,
                       .to = to.seconds,
                       .values = std::vector<value::CVal>()};
    const std::size_t first = m_queuedArchives.size();
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < list.GetSize(); ++i) {
        const value::CVal& value = *list.Get(i);
        const bool full =
            bytes > kArchiveBytesTogether || (i != 0 && i % kArchiveValuesTogether == 0);
        if (i == 0 || full) {
            bytes = 0;
            m_queuedArchives.push_back(
                {++m_lastRequest, std::string(variable), value.GetTime(), 0, {}});
        }
        bytes += value.IsText() ? value.Text().size() : 0;
        m_queuedArchives.back().to = value.GetTime();
        m_queuedArchives.back().values.push_back(value);
        if (m_journal != nullptr) entry.values->push_back(value);
    }
    if (m_queuedArchives.size() > first) {
        m_queuedArchives[first].from = from.seconds;
        m_queuedArchives.back().to = to.seconds;
    }
    Record(std::move(entry));
}

void CClientConnection::MakeArchiveModifyRequest() {
    Record({.operation = "MakeArchiveModifyRequest"});
    for (ArchiveModifyRequest& request : std::exchange(m_queuedArchives, {})) {
        AddWrite(std::move(request));
    }
    ReleaseWrites();
}

void CClientConnection::MakePeriodRequest(PeriodAction action, value::ValueKind kind,
                                          std::string_view variable, std::int64_t time) {
    Record({.operation = OperationName(action, kind),
            .variable = std::string(variable),
            .time = time});
    AddWrite(PeriodRequest{action, kind, std::string(variable), time, ++m_lastRequest});
    ReleaseWrites();
}

void CClientConnection::Acknowledge(std::string_view variable) {
    Record({.operation = "Acknowledge", .variable = std::string(variable)});
    AddWrite(AcknowledgeRequest{++m_lastRequest, std::string(variable)});
    ReleaseWrites();
}

// ---- on their way

void CClientConnection::AddWrite(WriteRequest request) {
    if (m_state == StateDown) return Lose(std::move(request), LossReason::NotConnected);
    const std::size_t bytes =
        std::visit([](const auto& content) { return BytesOf(content); }, request);
    if (m_writeBytes + bytes > kMostBytesWaiting) {
        return Lose(std::move(request), LossReason::QueueFull);
    }
    m_writeBytes += bytes;
    const std::uint64_t serial = ++m_lastSerial;
    std::visit([&](auto& content) { content.serial = serial; }, request);
    m_serials.emplace(std::visit([](const auto& content) { return content.id; }, request), serial);
    m_writes.emplace(serial, PendingWrite{std::move(request), bytes});
}

void CClientConnection::Lose(WriteRequest request, LossReason reason) {
    LostOrder lost;
    if (auto* modify = std::get_if<ModifyRequest>(&request)) {
        lost = {reason,         {}, modify->kind, std::move(modify->variable), modify->time,
                {modify->value}};
    } else if (auto* archive = std::get_if<ArchiveModifyRequest>(&request)) {
        lost = {reason,
                {},
                value::KindArchive,
                std::move(archive->variable),
                archive->from,
                std::move(archive->values)};
    } else if (auto* order = std::get_if<PeriodRequest>(&request)) {
        lost = {reason, order->action, order->kind, std::move(order->variable), order->time, {}};
    } else {
        auto& acknowledgement = std::get<AcknowledgeRequest>(request);
        lost = {reason, {}, value::KindNone, std::move(acknowledgement.variable), 0, {}};
    }
    OnOrderLost(lost);
}

void CClientConnection::ReleaseWrites() {
    if (m_state == StateDown) return;
    m_outbox.emplace_back(WriteTurn{m_lastSerial});
    SendOutbox();
}

void CClientConnection::SendWrites() {
    ModifyRequests together;
    const auto sendTogether = [&] {
        if (!together.requests.empty()) m_transport->Send(std::exchange(together, {}));
    };
    const auto end = m_writes.upper_bound(m_lastReleased);
    for (auto next = m_writes.upper_bound(m_lastSent); next != end; ++next) {
        const PendingWrite& write = next->second;
        const bool isAnswered = IsAnswered(write);
        if (isAnswered && (m_writesUnderWay >= kMostWritesUnderWay ||
                           m_writeBytesUnderWay >= kMostBytesUnderWay)) {
            break;
        }
        m_lastSent = next->first;
        if (isAnswered) {
            ++m_writesUnderWay;
            m_writeBytesUnderWay += write.bytes;
        } else {
            ++m_ordersUnderWay;
        }
        if (const auto* modify = std::get_if<ModifyRequest>(&write.request)) {
            together.requests.push_back(*modify);
            continue;
        }
        sendTogether();
        if (const auto* order = std::get_if<PeriodRequest>(&write.request)) {
            m_transport->Send(*order);
        } else if (const auto* archive = std::get_if<ArchiveModifyRequest>(&write.request)) {
            m_transport->Send(*archive);
        } else {
            m_transport->Send(AcknowledgeRequests{{std::get<AcknowledgeRequest>(write.request)}});
        }
    }
    sendTogether();
    for (auto oldest = m_writes.begin(); m_ordersUnderWay > kMostOrdersUnderWay;) {
        const auto [serial, write] = *oldest++;
        if (!IsAnswered(write)) Forget(serial);
    }
}

bool CClientConnection::IsAnswered(const PendingWrite& write) const {
    return m_answersOrders || !std::holds_alternative<PeriodRequest>(write.request);
}

CClientConnection::PendingWrite CClientConnection::Forget(std::uint64_t serial) {
    PendingWrite write = std::move(m_writes.extract(serial).mapped());
    m_serials.erase(std::visit([](const auto& content) { return content.id; }, write.request));
    m_writeBytes -= write.bytes;
    if (serial > m_lastSent) return write;
    if (IsAnswered(write)) {
        --m_writesUnderWay;
        m_writeBytesUnderWay -= write.bytes;
    } else {
        --m_ordersUnderWay;
    }
    return write;
}

// ---- answers

void CClientConnection::Receive(ModifyResults& message) {
    for (const ModifyResults::Entry& entry : message.entries) FinishWrite(entry.id, entry.result);
    SendOutbox();
}

void CClientConnection::FinishWrite(RequestId id, std::uint16_t result) {
    const auto found = m_serials.find(id);
    if (found == m_serials.end()) return;
    const PendingWrite write = Forget(found->second);
    TellWrite(write.request, result);
}

void CClientConnection::TellWrite(const WriteRequest& request, std::uint16_t result) {
    RequestRecord record;
    record.result = result;
    record.variable = std::visit([](const auto& content) { return content.variable; }, request);
    const auto* modify = std::get_if<ModifyRequest>(&request);
    if (modify != nullptr) record.value = modify->value;
    const bool isCurrent = modify != nullptr && modify->kind == value::KindCurrent;
    if (std::holds_alternative<AcknowledgeRequest>(request)) {
        OnAcknowledgement(record);
    } else if (result == ResultOk) {
        if (isCurrent) OnCurrentDataModifyAck(record);
    } else if (isCurrent) {
        OnCurrentDataModifyError(record);
    } else if (modify != nullptr) {
        OnReportModifyError(modify->kind, record);
    } else if (const auto* order = std::get_if<PeriodRequest>(&request)) {
        OnPeriodError(order->action, order->kind, record);
    } else {
        OnArchiveModifyError(record);
    }
}

// ---- breaks

void CClientConnection::HoldWrites(bool wasConnected) {
    const bool sendsAgain = SendsWritesAgain();
    if (wasConnected) m_lastReleased = m_lastSerial;
    std::vector<std::pair<std::uint64_t, LossReason>> lost;
    std::vector<std::uint64_t> done;  // as far as will ever be known
    for (const auto& [serial, write] : m_writes) {
        const bool sent = serial <= m_lastSent;
        if (sent && !IsAnswered(write)) {
            done.push_back(serial);
        } else if (!sendsAgain || serial > m_lastReleased) {
            lost.emplace_back(serial, sent ? LossReason::Unanswered : LossReason::NotConnected);
        }
    }
    for (const std::uint64_t serial : done) Forget(serial);
    m_lastSent = 0;
    m_writesUnderWay = m_ordersUnderWay = 0;
    m_writeBytesUnderWay = 0;
    for (const auto& [serial, reason] : lost) {
        Lose(std::move(Forget(serial).request), reason);
    }
}

}  // namespace kalvex::vantrel
