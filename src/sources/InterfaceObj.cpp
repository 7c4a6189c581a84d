#include "sources/InterfaceObj.h"

#include <utility>

#include "sources/ClientInterface.h"

namespace kalvex::sources {

namespace {

value::CVal Marked(value::CVal value) {
    value.AddStatus(value::Status::Supervisory);
    return value;
}

}  // namespace

CInterfaceObj::CInterfaceObj(engine::CKalvexDoc& document, CClientInterface& client,
                             std::string_view source, std::string_view variable)
    : m_document(document), m_client(client), m_strSource(source), m_strVariable(variable) {}

void CInterfaceObj::NoteChange() {
    ++m_client.Services().changes;
}

CInterfaceClientConnection* CInterfaceObj::GetConnection() {
    if (m_connection != nullptr) return m_connection;
    const std::size_t connections = m_client.SourceList().Connections().size();
    if (std::exchange(m_connectionsSeen, connections) != connections)
        m_connection = m_client.FindConnection(m_strSource);
    return m_connection;
}

value::CVal* CInterfaceObj::CurrentValue() {
    if (m_fLocked) return &m_LockedVal;
    return m_pVarVal == nullptr ? nullptr : &m_pVarVal->Value();
}

ReportSlot* CInterfaceObj::FindSlot(value::ValueKind kind) {
    return value::IsReport(kind) ? &m_slots[value::ReportIndex(kind)] : nullptr;
}

CInterfaceObj::Outstanding CInterfaceObj::FindRequest(value::ValueKind kind) {
    if (kind == value::KindArchive) return {&m_nArchRequest, &m_eArchState};
    ReportSlot* slot = FindSlot(kind);
    return {&slot->m_request, &slot->m_state};
}

RequestState CInterfaceObj::GetRequestState(value::ValueKind kind) {
    return *FindRequest(kind).state;
}

const value::CVal* CInterfaceObj::FindValue(value::ValueKind kind, bool skipCheck) {
    const value::CVal* value = nullptr;
    if (kind == value::KindCurrent) {
        value = CurrentValue();
    } else if (const ReportSlot* slot = FindSlot(kind); slot && slot->m_state == RequestReady) {
        value = &slot->m_value;
    }
    if (value == nullptr || skipCheck) return value;
    const bool known = (value->GetStatus() & value::Status::Unknown) == 0;
    const bool usable = known ? value->GetType() != value::ValueType::None : m_fIgnoreUnknown;
    return usable ? value : nullptr;
}

bool CInterfaceObj::IsAnswered(value::ValueKind kind) {
    if (kind == value::KindCurrent) return true;
    return value::IsStored(kind) && GetRequestState(kind) != RequestWaiting;
}

void CInterfaceObj::SetLocked(bool flag) {
    m_fLocked = flag;
    if (flag && m_pVarVal != nullptr) m_LockedVal = m_pVarVal->Value();
}

bool CInterfaceObj::Write(value::CVal value) {
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr) return false;
    value::CVal marked = Marked(std::move(value));
    connection->AddCurrentDataModifyRequest(m_strVariable, marked);
    connection->MakeCurrentDataModifyRequest();
    value::CVal* target = CurrentValue();
    if (target == nullptr) return false;
    *target = std::move(marked);
    NoteChange();
    return true;
}

void CInterfaceObj::Assign(value::ValueKind kind, value::CVal value) {
    Cancel(kind);
    ReportSlot& slot = *FindSlot(kind);
    slot.m_state = RequestReady;
    slot.m_value = Marked(std::move(value));
    NoteChange();
}

// Without a connection the state stays, for there is nobody to tell.
void CInterfaceObj::Cancel(value::ValueKind kind) {
    const Outstanding request = FindRequest(kind);
    if (*request.state != RequestWaiting) return;
    GetConnection()->CancelDataRequest(kind, *request.id);
    *request.state = RequestNone;
    NoteChange();
}

void CInterfaceObj::CancelAll() {
    for (const value::ValueKind kind : value::kReportKinds) Cancel(kind);
    Cancel(value::KindArchive);
}

bool CInterfaceObj::Request(value::ValueKind kind, std::int64_t from, std::int64_t to) {
    Cancel(kind);
    NoteChange();
    m_ArchValues.RemoveAll();
    const Outstanding request = FindRequest(kind);
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr) {
        *request.state = RequestFailed;
        return false;
    }
    const bool single = value::IsReport(kind) && from == to;
    *request.id = connection->AddDataRequest(kind, m_strVariable, from, to,
                                             single ? nullptr : &m_ArchValues, *this);
    *request.state = RequestWaiting;
    connection->MakeDataRequest(kind);
    return true;
}

void CInterfaceObj::OnAnswer(value::ValueKind kind, vantrel::RequestRecord record) {
    RequestState& state = *FindRequest(kind).state;
    const bool failed = record.result != vantrel::ResultOk;
    state = failed ? RequestFailed : RequestReady;
    NoteChange();
    ReportSlot* slot = FindSlot(kind);
    if (slot == nullptr) return;
    if (failed) {
        slot->m_value.SetType(value::ValueType::None);
        slot->m_value.SetStatus(value::Status::Unknown);
    } else if (record.list == nullptr) {
        slot->m_value = std::move(record.value);
    }
}

bool CInterfaceObj::Put(value::ValueKind kind, std::int64_t time, value::CVal value, bool send) {
    if (!value::IsReport(kind)) return false;
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr) return false;
    connection->AddReportModifyRequest(kind, m_strVariable, time, Marked(std::move(value)));
    if (send) connection->MakeDataRequest(kind);
    return true;
}

bool CInterfaceObj::PutArchive(value::CArchiveValueList& list) {
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr || list.GetSize() == 0) return false;
    list.SortTimes();
    connection->AddArchiveModifyRequest(m_strVariable, list, list.Get(0)->GetTimeW(),
                                        list.Get(list.GetSize() - 1)->GetTimeW());
    connection->MakeArchiveModifyRequest();
    return true;
}

bool CInterfaceObj::Order(vantrel::PeriodAction action, value::ValueKind kind, std::int64_t time) {
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr) return false;
    connection->MakePeriodRequest(action, kind, m_strVariable, time);
    return true;
}

}  // namespace kalvex::sources
