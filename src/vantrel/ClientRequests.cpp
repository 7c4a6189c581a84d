// Requests of a connection: queued by "Add", sent by "Make", remembered until they are answered.
#include <utility>

#include "vantrel/ClientConnection.h"

namespace kalvex::vantrel {

namespace {

// A server refuses what is far beyond, so that no client can use up its memory.
constexpr std::size_t kMostReadsUnderWay = 500;

// What goes into one archive write; a longer list goes in several.
constexpr std::size_t kArchiveValuesTogether = 50000;
constexpr std::size_t kArchiveBytesTogether = 1 << 20;

// The words for a kind in the names of the operations.
struct KindRow {
    value::ValueKind kind;
    std::string_view words;
};

constexpr KindRow kKinds[] = {
    {value::KindHour, "HourReport"},     {value::KindDay, "DayReport"},
    {value::KindMonth, "MonthReport"},   {value::KindSpan, "SpanReport"},
    {value::KindArchive, "ArchiveData"},
};

constexpr std::string_view kActions[] = {"Init", "Load", "Calc", "Update", "Refresh"};

std::string OperationName(std::string_view verb, value::ValueKind kind,
                          std::string_view action = {}) {
    std::string name(verb);
    for (const KindRow& row : kKinds) {
        if (row.kind == kind) name += row.words;
    }
    name += action;
    name += "Request";
    return name;
}

}  // namespace

void CClientConnection::Record(JournalEntry entry) const {
    if (m_journal != nullptr) m_journal->Record(*this, std::move(entry));
}

void CClientConnection::Send(ClientMessage message) {
    if (m_state == StateConnected) {
        m_transport->Send(std::move(message));
    } else if (m_state != StateDown) {
        m_outbox.push_back(std::move(message));
    } else {
        Lose(message);
    }
}

void CClientConnection::Lose(const ClientMessage& message) {
    if (const auto* writes = std::get_if<ModifyRequests>(&message)) {
        for (const ModifyRequest& write : writes->requests) {
            OnOrderLost({std::nullopt, write.kind, write.variable, write.time, {write.value}});
        }
    } else if (const auto* archive = std::get_if<ArchiveModifyRequest>(&message)) {
        OnOrderLost(
            {std::nullopt, value::KindArchive, archive->variable, archive->from, archive->values});
    } else if (const auto* order = std::get_if<PeriodRequest>(&message)) {
        OnOrderLost({order->action, order->kind, order->variable, order->time, {}});
    }
}

// ---- reading

RequestId CClientConnection::AddDataRequest(value::ValueKind kind, std::string_view variable,
                                            std::int64_t from, std::int64_t to,
                                            value::CArchiveValueList* list, AnswerWindow& window) {
    const RequestId id = ++m_lastRequest;
    Record({.operation = OperationName("Add", kind),
            .variable = std::string(variable),
            .from = from,
            .to = to,
            .id = id,
            .list = list != nullptr});
    m_queuedReads[kind].push_back(id);
    m_reads.emplace(
        id, PendingRead{{id, kind, std::string(variable), from, to}, list, &window, {}, false});
    return id;
}

void CClientConnection::MakeDataRequest(value::ValueKind kind) {
    Record({.operation = OperationName("Make", kind)});
    SendWrites(kind);
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

// ---- writing

void CClientConnection::AddReportModifyRequest(value::ValueKind kind, std::string_view variable,
                                               std::int64_t time, value::CVal value) {
    Record({.operation = OperationName("Add", kind, "Modify"),
            .variable = std::string(variable),
            .time = time,
            .value = value});
    m_queuedWrites[kind].requests.push_back(
        {++m_lastRequest, kind, std::string(variable), time, std::move(value)});
}

void CClientConnection::SendWrites(value::ValueKind kind) {
    ModifyRequests writes = std::exchange(m_queuedWrites[kind], {});
    if (writes.requests.empty()) return;
    for (const ModifyRequest& write : writes.requests) {
        if (m_state == StateDown) break;
        m_writes.emplace(write.id, PendingWrite{kind, write.variable, write.value});
    }
    Send(std::move(writes));
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
    SendWrites(value::KindCurrent);
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
        Send(std::move(request));
    }
}

void CClientConnection::MakePeriodRequest(PeriodAction action, value::ValueKind kind,
                                          std::string_view variable, std::int64_t time) {
    Record({.operation = OperationName("Make", kind, kActions[static_cast<std::size_t>(action)]),
            .variable = std::string(variable),
            .time = time});
    Send(PeriodRequest{action, kind, std::string(variable), time});
}

void CClientConnection::Receive(ModifyResults& message) {
    for (const ModifyResults::Entry& entry : message.entries) FinishWrite(entry.id, entry.result);
}

void CClientConnection::FinishWrite(RequestId id, std::uint16_t result) {
    auto node = m_writes.extract(id);
    if (node.empty()) return;
    PendingWrite& write = node.mapped();
    RequestRecord record;
    record.result = result;
    record.variable = std::move(write.variable);
    record.value = std::move(write.value);
    if (write.kind == value::KindCurrent) {
        if (result == ResultOk) {
            OnCurrentDataModifyAck(record);
        } else {
            OnCurrentDataModifyError(record);
        }
    } else if (result != ResultOk) {
        OnReportModifyError(write.kind, record);
    }
}

void CClientConnection::FailOutstanding() {
    m_queuedReads.clear();
    m_readsToSend.clear();
    while (!m_reads.empty()) FinishRead(m_reads.begin()->first, ResultNothing);
    while (!m_writes.empty()) FinishWrite(m_writes.begin()->first, ResultNothing);
}

}  // namespace kalvex::vantrel
