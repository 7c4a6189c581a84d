#include "sources/InterfaceClientConnection.h"

#include <algorithm>

#include "platform/UserDirectory.h"
#include "sources/ClientInterface.h"
#include "sources/ReportNotifications.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"

namespace kalvex {

namespace {

constexpr std::uint32_t kConsoleWishes = 833;
static_assert((kConsoleWishes & SubscribeFlag::LogMessages) != 0);

struct FaultRow {
    ConnectionFault fault;
    const char* text;
    bool namesSource;
};

constexpr FaultRow kFaults[] = {
    {ConnectionFault::Create, "Błąd utworzenia połączenia (%s)", false},
    {ConnectionFault::Destroy, "Błąd usunięcia połączenia (%s)", false},
    {ConnectionFault::Open, "Błąd nawiązania połączenia z %s (%s)", true},
    {ConnectionFault::Close, "Błąd rozwiązania połączenia z %s (%s)", true},
    {ConnectionFault::Receive, "Błąd odbioru pakietu od %s (%s)", true},
};

constexpr std::array<const char*, kReportKinds.size()> kReportModifyErrors = {
    "Błąd modyfikacji raportu godzinowego",
    "Błąd modyfikacji raportu dobowego",
    "Błąd modyfikacji raportu miesięcznego",
    "Błąd modyfikacji raportu okresowego",
};

CVarReg& Registered(CVarVal& variable) {
    return static_cast<CVarReg&>(variable);
}

}  // namespace

void CInterfaceClientConnection::Log(const char* polish,
                                     std::initializer_list<std::string_view> arguments, int level) {
    m_services.log.Log(FormatText(m_services.translator.Translate(polish), arguments), level);
}

void CInterfaceClientConnection::GetLoginData(std::string& user, std::string& password) const {
    CClientConnection::GetLoginData(user, password);
    if (user != kNobody && !user.empty() && !m_services.consoleClient) return;
    m_services.users.ActiveUserInfo(user, password);
}

// ---- variables and their owners

std::unique_ptr<CVarVal> CInterfaceClientConnection::CreateVarVal(std::string_view name) {
    auto variable = std::make_unique<CVarReg>(name);
    variable->SetDefInfo(GetVarDefInfo(name));
    return variable;
}

void CInterfaceClientConnection::AttachVarOwner(CVarVal& variable, CInterfaceObj& owner) {
    Registered(variable).AddOwner(owner);
    owner.SetVarVal(&Registered(variable));
}

void CInterfaceClientConnection::DetachVarOwner(CInterfaceObj& owner) {
    owner.SetVarVal(nullptr);
    if (CVarVal* variable = GetVarVal(owner.GetVariable())) {
        Registered(*variable).RemoveOwner(owner);
    }
}

bool CInterfaceClientConnection::IsVarInUse(const CVarVal& variable) const {
    return !m_services.consoleClient && !static_cast<const CVarReg&>(variable).Owners().empty();
}

std::uint32_t CInterfaceClientConnection::GetSubscribeFlags(const CVarVal& variable) const {
    return m_services.consoleClient ? kConsoleWishes
                                    : CClientConnection::GetSubscribeFlags(variable);
}

void CInterfaceClientConnection::OnVariableList() {
    for (int i = 0; i <= GetMaxVarValIndex(); ++i) {
        CVarReg& variable = Registered(GetVarVal(i));
        variable.SetDefInfo(GetVarDefInfo(variable.GetName()));
    }
    m_services.definitionsChanged = true;
    CClientConnection::OnVariableList();
}

// ---- the life of the connection

void CInterfaceClientConnection::OnConnectionFault(ConnectionFault fault, std::uint32_t code) {
    const std::string words = GetErrorInfo(code, m_services.translator);
    for (const FaultRow& row : kFaults) {
        if (row.fault != fault) continue;
        if (row.namesSource) {
            Log(row.text, {GetServerName(), words}, LogErrors);
        } else {
            Log(row.text, {words}, LogErrors);
        }
    }
}

void CInterfaceClientConnection::OnServerAccess(bool denied, std::string_view text) {
    if (denied) Log("Brak dostępu do serwera %s %s", {GetServerName(), text}, LogErrors);
}

void CInterfaceClientConnection::OnConnect() {
    Log("Nawiązanie połączenia z %s", {GetServerName()}, LogEvents);
}

void CInterfaceClientConnection::OnDisconnect(std::uint32_t reason) {
    m_fDataReady = false;
    if (reason == ReasonClosed) {
        Log("Rozwiązanie połączenia z %s", {GetServerName()}, LogEvents);
    } else if (reason == ReasonSettingsChanged || reason == ReasonLoginChanged) {
        Log("Reinicjacja połączenia z %s", {GetServerName()}, LogEvents);
    } else {
        Log("Połączenie z %s zerwane (%s)",
            {GetServerName(), GetErrorInfo(reason, m_services.translator)}, LogErrors);
    }
    CClientConnection::OnDisconnect(reason);
}

void CInterfaceClientConnection::OnDataArrived() {
    m_fDataReady = GetState() == StateConnected;
}

// ---- what the server says of variables and reports

std::string CInterfaceClientConnection::LogVariableError(std::string_view text,
                                                         std::string_view variable) {
    if (variable.empty()) {
        m_services.log.Log(text, LogErrors);
        return std::string(text);
    }
    const std::string result = FormatText("%s (%s)", {text, variable});
    CVarVal* registered = GetVarVal(variable);
    if (registered == nullptr) {
        m_services.log.Log(result, LogErrors);
        return result;
    }
    for (const CInterfaceObj* owner : Registered(*registered).Owners()) {
        m_services.log.Log(
            FormatText("%s - %s (%s@%s)", {owner->GetDocument().GetPathName(), text,
                                           owner->GetSource(), owner->GetVariable()}),
            LogErrors);
    }
    return result;
}

void CInterfaceClientConnection::OnVarAccessError(const CRequestRecord& record) {
    std::string text;
    if (record.result == 0) {
        text = m_services.translator.Translate("Brak zmiennej w źródle");
    } else {
        text = FormatText(
            m_services.translator.Translate("Brak dostępu do wartości zmiennej w źródle (%d)"),
            {std::to_string(record.result)});
    }
    LogVariableError(text, record.variable);
}

void CInterfaceClientConnection::OnCurrentDataModifyAck(const CRequestRecord& record) {
    if (CVarVal* variable = GetVarVal(record.variable)) variable->SetControlValue(record.value);
}

void CInterfaceClientConnection::OnReportModifyError(ValueKind kind, const CRequestRecord& record) {
    LogVariableError(m_services.translator.Translate(kReportModifyErrors[ReportIndex(kind)]),
                     record.variable);
}

void CInterfaceClientConnection::OnReportChange(ValueKind kind, std::int64_t time) {
    const std::vector<CKalvexDoc*>* documents = FindNotifyDocs(kind);
    if (documents == nullptr) return;
    for (CKalvexDoc* document : *documents) {
        CReportNotifications::Of(*document).OnReportChange(kind, GetServerName(), time);
    }
}

std::vector<CKalvexDoc*>* CInterfaceClientConnection::FindNotifyDocs(ValueKind kind) {
    return IsReport(kind) ? &m_arrNotifyDocs[ReportIndex(kind)] : nullptr;
}

bool CInterfaceClientConnection::AddNotifyDoc(ValueKind kind, CKalvexDoc& document) {
    std::vector<CKalvexDoc*>* documents = FindNotifyDocs(kind);
    if (documents == nullptr) return false;
    if (std::find(documents->begin(), documents->end(), &document) != documents->end()) {
        return false;
    }
    documents->push_back(&document);
    return true;
}

void CInterfaceClientConnection::RemoveNotifyDoc(ValueKind kind, CKalvexDoc& document) {
    if (std::vector<CKalvexDoc*>* documents = FindNotifyDocs(kind)) {
        std::erase(*documents, &document);
    }
}

}  // namespace kalvex
