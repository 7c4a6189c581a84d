// Reads of a connection: queued by "Add", sent by "Make", remembered until they are answered.
// Writes: ClientWrites.cpp.
#include <utility>

#include "vantrel/ClientConnection.h"
#include "vantrel/OperationName.h"

namespace kalvex::vantrel {

namespace {

// A server refuses what is far beyond, so that no client can use up its memory.
constexpr std::size_t kMostReadsUnderWay = 500;

}  // namespace

void CClientConnection::Record(JournalEntry entry) const {
    if (m_journal != nullptr) m_journal->Record(*this, std::move(entry));
}

void CClientConnection::Send(ClientMessage message) {
    if (m_state == StateDown) return;
    m_outbox.emplace_back(std::move(message));
    SendOutbox();
}

// In the order in which all of it was made.
void CClientConnection::SendOutbox() {
    if (m_state != StateConnected) return;
    for (;;) {
        SendWrites();
        const bool heldBack =
            m_writes.upper_bound(m_lastSent) != m_writes.upper_bound(m_lastReleased);
        if (heldBack || m_outbox.empty()) return;
        std::variant<ClientMessage, WriteTurn> next = std::move(m_outbox.front());
        m_outbox.pop_front();
        if (const auto* turn = std::get_if<WriteTurn>(&next)) {
            m_lastReleased = turn->upTo;
        } else {
            m_transport->Send(std::get<ClientMessage>(std::move(next)));
        }
    }
}

// ---- reading

RequestId CClientConnection::AddDataRequest(value::ValueKind kind, std::string_view variable,
                                            std::int64_t from, std::int64_t to,
                                            value::CArchiveValueList* list, AnswerWindow& window,
                                            std::uint32_t points) {
    const RequestId id = ++m_lastRequest;
    Record({.operation = OperationName("Add", kind),
            .variable = std::string(variable),
            .from = from,
            .to = to,
            .id = id,
            .list = list != nullptr,
            .points = points == 0 ? std::nullopt : std::optional(points)});
    m_queuedReads[kind].push_back(id);
    m_reads.emplace(
        id,
        PendingRead{{id, kind, std::string(variable), from, to, points}, list, &window, {}, false});
    return id;
}

void CClientConnection::MakeDataRequest(value::ValueKind kind) {
    Record({.operation = OperationName("Make", kind)});
    MakeWrites(kind);
    const std::vector<RequestId> reads = std::exchange(m_queuedReads[kind], {});
    if (m_state == StateDown) {
        for (const RequestId id : reads) FinishRead(id, ResultNothing);
        return;
    }
    m_readsToSend.insert(m_readsToSend.end(), reads.begin(), reads.end());
    SendReads();
}

void CClientConnection::SendReads() {
    ReadRequests message;
    while (!m_readsToSend.empty() && m_readsUnderWay < kMostReadsUnderWay) {
        const auto found = m_reads.find(m_readsToSend.front());
        m_readsToSend.pop_front();
        if (found == m_reads.end()) continue;
        found->second.sent = true;
        ++m_readsUnderWay;
        message.requests.push_back(found->second.request);
    }
    if (!message.requests.empty()) Send(std::move(message));
}

void CClientConnection::CancelDataRequest(value::ValueKind kind, RequestId id) {
    Record({.operation = OperationName("Cancel", kind), .id = id});
    if (m_reads.count(id) == 0) return;
    std::erase(m_queuedReads[kind], id);
    if (!TakeRead(id).sent) return;
    Send(CancelRequests{{id}});
    SendReads();
}

CClientConnection::PendingRead CClientConnection::TakeRead(RequestId id) {
    PendingRead read = std::move(m_reads.extract(id).mapped());
    if (read.sent) --m_readsUnderWay;
    return read;
}

void CClientConnection::Receive(ReadAnswer& message) {
    const auto found = m_reads.find(message.id);
    if (found == m_reads.end()) return;
    for (value::CVal& value : message.values) found->second.values.Add(std::move(value));
    if (message.last || message.result != ResultOk) FinishRead(message.id, message.result);
}

void CClientConnection::FinishRead(RequestId id, std::uint16_t result) {
    PendingRead read = TakeRead(id);
    SendReads();
    RequestRecord record;
    record.result = result;
    record.variable = std::move(read.request.variable);
    record.list = read.list;
    if (result == ResultOk && read.list != nullptr) {
        *read.list = std::move(read.values);
    } else if (result == ResultOk) {
        if (const value::CVal* value = read.values.Get(0)) {
            record.value = *value;
        } else {
            record.result = ResultNothing;
        }
    }
    read.window->OnAnswer(read.request.kind, std::move(record));
}

void CClientConnection::FailOutstanding() {
    m_queuedReads.clear();
    m_readsToSend.clear();
    while (!m_reads.empty()) FinishRead(m_reads.begin()->first, ResultNothing);
}

}  // namespace kalvex::vantrel
