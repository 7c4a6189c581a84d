#include "sources/InterfaceObj.h"

#include "sources/ClientInterface.h"

namespace kalvex {

namespace {

CVal Marked(CVal value) {
    value.AddStatus(Status::Supervisory);
    return value;
}

}  // namespace

CInterfaceObj::CInterfaceObj(CKalvexDoc& document, CClientInterface& client,
                             std::string_view source, std::string_view variable)
    : m_document(document), m_client(client), m_strSource(source), m_strVariable(variable) {}

CInterfaceClientConnection* CInterfaceObj::GetConnection() {
    if (m_pConnection == nullptr) m_pConnection = m_client.FindConnection(m_strSource);
    return m_pConnection;
}

CVal* CInterfaceObj::CurrentValue() {
    if (m_fLocked) return &m_LockedVal;
    return m_pVarVal == nullptr ? nullptr : &m_pVarVal->Value();
}

CReportSlot* CInterfaceObj::FindSlot(ValueKind kind) {
    return IsReport(kind) ? &m_Slots[ReportIndex(kind)] : nullptr;
}

CInterfaceObj::Outstanding CInterfaceObj::FindRequest(ValueKind kind) {
    if (kind == KindArchive) return {&m_nArchRequest, &m_eArchState};
    CReportSlot* slot = FindSlot(kind);
    return {&slot->m_nRequest, &slot->m_eState};
}

RequestState CInterfaceObj::GetRequestState(ValueKind kind) {
    return *FindRequest(kind).state;
}

bool CInterfaceObj::IsUsable(ValueKind kind) {
    const CVal* value = nullptr;
    if (kind == KindCurrent) {
        value = CurrentValue();
    } else if (const CReportSlot* slot = FindSlot(kind); slot && slot->m_eState == RequestReady) {
        value = &slot->m_Value;
    }
    if (value == nullptr) return false;
    if ((value->GetStatus() & Status::Unknown) != 0) return m_fIgnoreUnknown;
    return value->GetType() != ValueType::None;
}

void CInterfaceObj::ReadValue(CVal& out, ValueKind kind, bool skipCheck) {
    out = CVal();
    if (!skipCheck && !IsUsable(kind)) return;
    if (kind == KindCurrent) {
        if (const CVal* value = CurrentValue()) out = *value;
    } else if (const CReportSlot* slot = FindSlot(kind); slot && slot->m_eState == RequestReady) {
        out = slot->m_Value;
    }
}

bool CInterfaceObj::IsAnswered(ValueKind kind) {
    if (kind == KindCurrent) return true;
    return IsStored(kind) && GetRequestState(kind) != RequestWaiting;
}

void CInterfaceObj::SetLocked(bool flag) {
    m_fLocked = flag;
    if (flag && m_pVarVal != nullptr) m_LockedVal = m_pVarVal->Value();
}

bool CInterfaceObj::Write(CVal value) {
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr) return false;
    CVal marked = Marked(std::move(value));
    connection->AddCurrentDataModifyRequest(m_strVariable, marked);
    connection->MakeCurrentDataModifyRequest();
    CVal* target = CurrentValue();
    if (target == nullptr) return false;
    *target = std::move(marked);
    return true;
}

void CInterfaceObj::Assign(ValueKind kind, CVal value) {
    Cancel(kind);
    CReportSlot& slot = *FindSlot(kind);
    slot.m_eState = RequestReady;
    slot.m_Value = Marked(std::move(value));
}

// Without a connection the state stays, for there is nobody to tell.
void CInterfaceObj::Cancel(ValueKind kind) {
    const Outstanding request = FindRequest(kind);
    if (*request.state != RequestWaiting) return;
    GetConnection()->CancelDataRequest(kind, *request.id);
    *request.state = RequestNone;
}

void CInterfaceObj::CancelAll() {
    for (const ValueKind kind : kReportKinds) Cancel(kind);
    Cancel(KindArchive);
}

bool CInterfaceObj::Request(ValueKind kind, std::int64_t from, std::int64_t to) {
    Cancel(kind);
    m_ArchValues.RemoveAll();
    const Outstanding request = FindRequest(kind);
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr) {
        *request.state = RequestFailed;
        return false;
    }
    const bool single = IsReport(kind) && from == to;
    *request.id = connection->AddDataRequest(kind, m_strVariable, from, to,
                                             single ? nullptr : &m_ArchValues, *this);
    *request.state = RequestWaiting;
    connection->MakeDataRequest(kind);
    return true;
}

void CInterfaceObj::OnAnswer(ValueKind kind, CRequestRecord record) {
    RequestState& state = *FindRequest(kind).state;
    const bool failed = record.result != ResultOk;
    state = failed ? RequestFailed : RequestReady;
    CReportSlot* slot = FindSlot(kind);
    if (slot == nullptr) return;
    if (failed) {
        slot->m_Value.SetType(ValueType::None);
        slot->m_Value.SetStatus(Status::Unknown);
    } else if (record.list == nullptr) {
        slot->m_Value = std::move(record.value);
    }
}

bool CInterfaceObj::Put(ValueKind kind, std::int64_t time, CVal value, bool send) {
    if (!IsReport(kind)) return false;
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr) return false;
    connection->AddReportModifyRequest(kind, m_strVariable, time, Marked(std::move(value)));
    if (send) connection->MakeDataRequest(kind);
    return true;
}

bool CInterfaceObj::PutArchive(CArchiveValueList& list) {
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr || list.GetSize() == 0) return false;
    list.SortTimes();
    connection->AddArchiveModifyRequest(m_strVariable, list, list.Get(0)->GetTimeW(),
                                        list.Get(list.GetSize() - 1)->GetTimeW());
    connection->MakeArchiveModifyRequest();
    return true;
}

bool CInterfaceObj::Order(PeriodAction action, ValueKind kind, std::int64_t time) {
    CInterfaceClientConnection* connection = GetConnection();
    if (connection == nullptr) return false;
    connection->MakePeriodRequest(action, kind, m_strVariable, time);
    return true;
}

}  // namespace kalvex
