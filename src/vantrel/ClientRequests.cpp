// Requests of a connection: queued by "Add", sent by "Make", remembered until they are answered.
#include <utility>

#include "vantrel/ClientConnection.h"

namespace kalvex {

namespace {

// The words for a kind in the names of the operations.
struct KindRow {
    ValueKind kind;
    std::string_view words;
};

constexpr KindRow kKinds[] = {
    {KindHour, "HourReport"}, {KindDay, "DayReport"},       {KindMonth, "MonthReport"},
    {KindSpan, "SpanReport"}, {KindArchive, "ArchiveData"},
};

constexpr std::string_view kActions[] = {"Init", "Load", "Calc", "Update", "Refresh"};

std::string OperationName(std::string_view verb, ValueKind kind, std::string_view action = {}) {
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
    if (m_pJournal != nullptr) m_pJournal->Record(*this, std::move(entry));
}

void CClientConnection::Send(ClientMessage message) {
    if (m_nState == StateConnected) {
        m_pTransport->Send(std::move(message));
    } else if (m_nState != StateDown) {
        m_arrOutbox.push_back(std::move(message));
    }
}

// ---- reading

RequestId CClientConnection::AddDataRequest(ValueKind kind, std::string_view variable,
                                            std::int64_t from, std::int64_t to,
                                            CArchiveValueList* list, CAnswerWindow& window,
                                            CVarOwner* context) {
    const RequestId id = ++m_nLastRequest;
    Record({.operation = OperationName("Add", kind),
            .variable = std::string(variable),
            .from = from,
            .to = to,
            .id = id,
            .list = list != nullptr});
    const ReadRequest request{id, kind, std::string(variable), from, to};
    m_mapQueuedReads[kind].requests.push_back(request);
    m_mapReads.emplace(id, PendingRead{request, list, &window, context, {}});
    return id;
}

void CClientConnection::MakeDataRequest(ValueKind kind) {
    Record({.operation = OperationName("Make", kind)});
    SendWrites(kind);
    ReadRequests reads = std::exchange(m_mapQueuedReads[kind], {});
    if (m_nState == StateDown) {
        for (const ReadRequest& read : reads.requests) FinishRead(read.id, ResultNothing);
    } else if (!reads.requests.empty()) {
        Send(std::move(reads));
    }
}

void CClientConnection::CancelDataRequest(ValueKind kind, RequestId id) {
    Record({.operation = OperationName("Cancel", kind), .id = id});
    if (m_mapReads.erase(id) == 0) return;
    std::vector<ReadRequest>& queued = m_mapQueuedReads[kind].requests;
    const auto isCancelled = [id](const ReadRequest& request) { return request.id == id; };
    if (std::erase_if(queued, isCancelled) == 0) Send(CancelRequests{{id}});
}

void CClientConnection::Receive(ReadAnswer& message) {
    const auto found = m_mapReads.find(message.id);
    if (found == m_mapReads.end()) return;
    std::vector<CVal>& values = found->second.values;
    if (values.empty()) {
        values = std::move(message.values);
    } else {
        values.insert(values.end(), std::make_move_iterator(message.values.begin()),
                      std::make_move_iterator(message.values.end()));
    }
    if (message.last || message.result != ResultOk) FinishRead(message.id, message.result);
}

void CClientConnection::FinishRead(RequestId id, std::uint16_t result) {
    PendingRead read = std::move(m_mapReads.extract(id).mapped());
    CRequestRecord record;
    record.result = result;
    record.variable = std::move(read.request.variable);
    record.context = read.context;
    record.list = read.list;
    if (result == ResultOk && read.list != nullptr) {
        read.list->RemoveAll();
        for (const CVal& value : read.values) read.list->Add(value);
    } else if (result == ResultOk) {
        if (read.values.empty()) {
            record.result = ResultNothing;
        } else {
            record.value = std::move(read.values.front());
        }
    }
    read.window->OnAnswer(read.request.kind, record);
}

// ---- writing

void CClientConnection::AddReportModifyRequest(ValueKind kind, std::string_view variable,
                                               std::int64_t time, const CVal& value) {
    Record({.operation = OperationName("Add", kind, "Modify"),
            .variable = std::string(variable),
            .time = time,
            .value = value});
    m_mapQueuedWrites[kind].requests.push_back(
        {++m_nLastRequest, kind, std::string(variable), time, value});
}

void CClientConnection::SendWrites(ValueKind kind) {
    ModifyRequests writes = std::exchange(m_mapQueuedWrites[kind], {});
    if (m_nState == StateDown || writes.requests.empty()) return;
    for (const ModifyRequest& write : writes.requests) {
        m_mapWrites.emplace(write.id, PendingWrite{kind, write.variable, write.value});
    }
    Send(std::move(writes));
}

void CClientConnection::AddCurrentDataModifyRequest(std::string_view variable, const CVal& value) {
    Record({.operation = "AddCurrentDataModifyRequest",
            .variable = std::string(variable),
            .value = value});
    m_mapQueuedWrites[KindCurrent].requests.push_back(
        {++m_nLastRequest, KindCurrent, std::string(variable), 0, value});
}

void CClientConnection::MakeCurrentDataModifyRequest() {
    Record({.operation = "MakeCurrentDataModifyRequest"});
    SendWrites(KindCurrent);
}

void CClientConnection::AddArchiveModifyRequest(std::string_view variable,
                                                const CArchiveValueList& list, TIMEW from,
                                                TIMEW to) {
    std::vector<CVal> values;
    values.reserve(list.GetSize());
    for (std::size_t i = 0; i < list.GetSize(); ++i) values.push_back(*list.Get(i));
    Record({.operation = "AddArchiveModifyRequest",
            .variable = std::string(variable),
            .from = from.seconds,
            .to = to.seconds,
            .values = values});
    m_arrQueuedArchives.push_back(
        {++m_nLastRequest, std::string(variable), from.seconds, to.seconds, std::move(values)});
}

void CClientConnection::MakeArchiveModifyRequest() {
    Record({.operation = "MakeArchiveModifyRequest"});
    for (ArchiveModifyRequest& request : std::exchange(m_arrQueuedArchives, {})) {
        Send(std::move(request));
    }
}

void CClientConnection::MakePeriodRequest(PeriodAction action, ValueKind kind,
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
    auto node = m_mapWrites.extract(id);
    if (node.empty()) return;
    PendingWrite& write = node.mapped();
    CRequestRecord record;
    record.result = result;
    record.variable = std::move(write.variable);
    record.value = std::move(write.value);
    if (write.kind == KindCurrent) {
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
    m_mapQueuedReads.clear();
    while (!m_mapReads.empty()) FinishRead(m_mapReads.begin()->first, ResultNothing);
    while (!m_mapWrites.empty()) FinishWrite(m_mapWrites.begin()->first, ResultNothing);
}

}  // namespace kalvex
