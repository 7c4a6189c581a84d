#include "sources/InterfaceClientConnection.h"

#include <algorithm>

#include "platform/UserDirectory.h"
#include "sources/ClientInterface.h"
#include "sources/ConsoleEvents.h"
#include "sources/LostOrderText.h"
#include "sources/ReportNotifications.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"
#include "value/ValueText.h"
#include "vantrel/OrderWords.h"

namespace kalvex::sources {

namespace {

constexpr std::size_t kMostLostTold = 1000;

constexpr std::uint32_t kConsoleWishes = 833;
static_assert((kConsoleWishes & vantrel::SubscribeFlag::LogMessages) != 0);

struct FaultRow {
    vantrel::ConnectionFault fault;
    const char* text;
    bool namesSource;
};

constexpr FaultRow kFaults[] = {
    {vantrel::ConnectionFault::Create, "Błąd utworzenia połączenia (%s)", false},
    {vantrel::ConnectionFault::Destroy, "Błąd usunięcia połączenia (%s)", false},
    {vantrel::ConnectionFault::Open, "Błąd nawiązania połączenia z %s (%s)", true},
    {vantrel::ConnectionFault::Close, "Błąd rozwiązania połączenia z %s (%s)", true},
    {vantrel::ConnectionFault::Receive, "Błąd odbioru pakietu od %s (%s)", true},
};

constexpr std::array<const char*, value::kReportKinds.size()> kReportModifyErrors = {
    "Błąd modyfikacji raportu godzinowego",
    "Błąd modyfikacji raportu dobowego",
    "Błąd modyfikacji raportu miesięcznego",
    "Błąd modyfikacji raportu okresowego",
};

constexpr const char* kArchiveNotWritten = platform::Translatable(
    "Błąd modyfikacji danych archiwalnych - %s, nie przyjęto żadnej wartości");
constexpr const char* kOrderNotDone = platform::Translatable("Błąd polecenia: %s - %s");
constexpr const char* kWritesWait = platform::Translatable(
    "Zapisy i polecenia bez odpowiedzi źródła %s: %d, zostaną wysłane ponownie");

CVarReg& Registered(vantrel::CVarVal& variable) {
    return static_cast<CVarReg&>(variable);
}

}  // namespace

void CVarRC::SetValue(value::CVal value) {
    m_console.OnHeldValue(GetName(), value);
    CVarReg::SetValue(std::move(value));
}

void CVarRC::SetControlValue(value::CVal value) {
    m_console.OnControlValue(GetName(), value);
    vantrel::CVarVal::SetValue(std::move(value));
}

void CInterfaceClientConnection::Log(const char* polish,
                                     std::initializer_list<std::string_view> arguments, int level) {
    m_services.log.Log(text::FormatText(m_services.translator.Translate(polish), arguments), level);
}

void CInterfaceClientConnection::GetLoginData(std::string& user, platform::Secret& password) const {
    vantrel::CClientConnection::GetLoginData(user, password);
    if (user != platform::kNobody && !user.empty() && m_services.console == nullptr) return;
    std::string own;
    m_services.users.ActiveUserInfo(user, own);
    password = std::move(own);
}

// ---- variables and their owners

std::unique_ptr<vantrel::CVarVal> CInterfaceClientConnection::CreateVarVal(std::string_view name) {
    std::unique_ptr<CVarReg> variable;
    if (m_services.console != nullptr) {
        variable = std::make_unique<CVarRC>(name, m_services.changes, *m_services.console);
    } else {
        variable = std::make_unique<CVarReg>(name, m_services.changes);
    }
    variable->SetDefInfo(GetVarDefInfo(name));
    return variable;
}

void CInterfaceClientConnection::AttachVarOwner(vantrel::CVarVal& variable, CInterfaceObj& owner) {
    Registered(variable).AddOwner(owner);
    owner.SetVarVal(&Registered(variable));
}

void CInterfaceClientConnection::DetachVarOwner(CInterfaceObj& owner) {
    owner.SetVarVal(nullptr);
    if (vantrel::CVarVal* variable = GetVarVal(owner.GetVariable())) {
        Registered(*variable).RemoveOwner(owner);
    }
}

bool CInterfaceClientConnection::IsVarInUse(const vantrel::CVarVal& variable) const {
    return m_services.console == nullptr && !static_cast<const CVarReg&>(variable).Owners().empty();
}

std::uint32_t CInterfaceClientConnection::GetSubscribeFlags(
    const vantrel::CVarVal& variable) const {
    return m_services.console != nullptr ? kConsoleWishes
                                         : vantrel::CClientConnection::GetSubscribeFlags(variable);
}

bool CInterfaceClientConnection::SendsWritesAgain() const {
    return m_services.console == nullptr;
}

void CInterfaceClientConnection::OnVariableList() {
    for (int i = 0; i <= GetMaxVarValIndex(); ++i) {
        CVarReg& variable = Registered(GetVarVal(i));
        variable.SetDefInfo(GetVarDefInfo(variable.GetName()));
    }
    m_services.definitionsChanged = true;
    ++m_services.changes;
    vantrel::CClientConnection::OnVariableList();
}

// ---- the life of the connection

void CInterfaceClientConnection::OnConnectionFault(vantrel::ConnectionFault fault,
                                                   std::uint32_t code) {
    if (fault == vantrel::ConnectionFault::Open) m_downReason = code;
    const std::string words = GetErrorInfo(code, m_services.translator);
    for (const FaultRow& row : kFaults) {
        if (row.fault != fault) continue;
        if (row.namesSource) {
            Log(row.text, {GetServerName(), words}, platform::LogErrors);
        } else {
            Log(row.text, {words}, platform::LogErrors);
        }
    }
}

void CInterfaceClientConnection::OnServerAccess(bool denied, std::string_view text) {
    if (!denied) return;
    m_downReason = vantrel::ReasonLoginRefused;
    Log("Brak dostępu do serwera %s %s", {GetServerName(), text}, platform::LogErrors);
}

void CInterfaceClientConnection::OnConnect() {
    m_downReason = 0;
    for (int i = 0; i <= GetMaxVarValIndex(); ++i) Registered(GetVarVal(i)).SetRefusal({});
    Log("Nawiązanie połączenia z %s", {GetServerName()}, platform::LogEvents);
    if (m_lostUntold > 0) {
        Log("Bez połączenia z %s przepadły jeszcze polecenia w liczbie %s",
            {GetServerName(), std::to_string(m_lostUntold)}, platform::LogErrors);
    }
    m_lostTold.clear();
    m_lostUntold = 0;
    if (m_services.console != nullptr) m_services.console->OnConnected(GetServerName());
}

void CInterfaceClientConnection::OnDisconnect(std::uint32_t reason) {
    m_fDataReady = false;
    m_downReason = reason;
    if (reason == vantrel::ReasonClosed) {
        Log("Rozwiązanie połączenia z %s", {GetServerName()}, platform::LogEvents);
    } else if (reason == vantrel::ReasonSettingsChanged || reason == vantrel::ReasonLoginChanged) {
        Log("Reinicjacja połączenia z %s", {GetServerName()}, platform::LogEvents);
    } else {
        Log("Połączenie z %s zerwane (%s)",
            {GetServerName(), GetErrorInfo(reason, m_services.translator)}, platform::LogErrors);
    }
    if (WritesWaiting() > 0) {
        Log(kWritesWait, {GetServerName(), std::to_string(WritesWaiting())}, platform::LogErrors);
    }
    vantrel::CClientConnection::OnDisconnect(reason);
    ++m_services.changes;
    if (m_services.console != nullptr) m_services.console->OnConnectionLost(GetServerName());
}

void CInterfaceClientConnection::OnDataArrived() {
    m_fDataReady = GetState() == vantrel::StateConnected;
    ++m_services.changes;
}

// ---- what the server says of variables and reports

std::string CInterfaceClientConnection::LogVariableError(std::string_view text,
                                                         std::string_view variable) {
    if (variable.empty()) {
        m_services.log.Log(text, platform::LogErrors);
        return std::string(text);
    }
    const std::string result = text::FormatText("%s (%s)", {text, variable});
    vantrel::CVarVal* registered = GetVarVal(variable);
    if (registered == nullptr) {
        m_services.log.Log(result, platform::LogErrors);
        return result;
    }
    for (const CInterfaceObj* owner : Registered(*registered).Owners()) {
        m_services.log.Log(
            text::FormatText("%s - %s (%s@%s)", {owner->GetDocument().GetPathName(), text,
                                                 owner->GetSource(), owner->GetVariable()}),
            platform::LogErrors);
    }
    return result;
}

void CInterfaceClientConnection::OnVarAccessError(const vantrel::RequestRecord& record) {
    std::string text;
    if (record.result == 0) {
        text = m_services.translator.Translate("Brak zmiennej w źródle");
    } else {
        text = text::FormatText(
            m_services.translator.Translate("Brak dostępu do wartości zmiennej w źródle (%d)"),
            {std::to_string(record.result)});
    }
    Registered(*GetVarVal(record.variable)).SetRefusal(record.result);
    ++m_services.changes;
    LogVariableError(text, record.variable);
}

void CInterfaceClientConnection::OnCurrentDataModifyAck(const vantrel::RequestRecord& record) {
    if (vantrel::CVarVal* variable = GetVarVal(record.variable))
        variable->SetControlValue(record.value);
}

std::string CInterfaceClientConnection::WhyNot(const vantrel::RequestRecord& record) const {
    return vantrel::ResultWords(record.result, m_services.translator);
}

void CInterfaceClientConnection::OnCurrentDataModifyError(const vantrel::RequestRecord& record) {
    LogVariableError(
        text::FormatText(m_services.translator.Translate("Odrzucono zapis wartości %s (%s)"),
                         {value::ValueToText(record.value), WhyNot(record)}),
        record.variable);
}

void CInterfaceClientConnection::OnArchiveModifyError(const vantrel::RequestRecord& record) {
    LogVariableError(
        text::FormatText(m_services.translator.Translate(kArchiveNotWritten), {WhyNot(record)}),
        record.variable);
}

void CInterfaceClientConnection::OnPeriodError(vantrel::PeriodAction action, value::ValueKind kind,
                                               const vantrel::RequestRecord& record) {
    LogVariableError(text::FormatText(m_services.translator.Translate(kOrderNotDone),
                                      {vantrel::PeriodWords(action, kind, m_services.translator),
                                       WhyNot(record)}),
                     record.variable);
}

// A script that tries until it succeeds must not fill the log.
void CInterfaceClientConnection::OnOrderLost(const vantrel::LostOrder& order) {
    const std::string text = LostOrderText(order, m_services.translator);
    if (m_lostTold.size() < kMostLostTold && m_lostTold.emplace(order.variable, text).second) {
        LogVariableError(text, order.variable);
    } else {
        ++m_lostUntold;
    }
}

void CInterfaceClientConnection::OnReportModifyError(value::ValueKind kind,
                                                     const vantrel::RequestRecord& record) {
    LogVariableError(m_services.translator.Translate(kReportModifyErrors[value::ReportIndex(kind)]),
                     record.variable);
}

void CInterfaceClientConnection::OnReportChange(value::ValueKind kind, std::int64_t time) {
    const std::vector<engine::CKalvexDoc*>* documents = FindNotifyDocs(kind);
    if (documents == nullptr) return;
    for (engine::CKalvexDoc* document : *documents) {
        ReportNotifications::Of(*document).OnReportChange(kind, GetServerName(), time);
    }
}

void CInterfaceClientConnection::OnRemoteLogMessage(int level, std::int64_t time,
                                                    std::string_view text) {
    if (m_services.console != nullptr) m_services.console->OnModuleLog(level, time, text);
}

std::vector<engine::CKalvexDoc*>* CInterfaceClientConnection::FindNotifyDocs(
    value::ValueKind kind) {
    return value::IsReport(kind) ? &m_notifyDocs[value::ReportIndex(kind)] : nullptr;
}

bool CInterfaceClientConnection::AddNotifyDoc(value::ValueKind kind, engine::CKalvexDoc& document) {
    std::vector<engine::CKalvexDoc*>* documents = FindNotifyDocs(kind);
    if (documents == nullptr) return false;
    if (std::find(documents->begin(), documents->end(), &document) != documents->end()) {
        return false;
    }
    documents->push_back(&document);
    return true;
}

void CInterfaceClientConnection::RemoveNotifyDoc(value::ValueKind kind,
                                                 engine::CKalvexDoc& document) {
    if (std::vector<engine::CKalvexDoc*>* documents = FindNotifyDocs(kind)) {
        std::erase(*documents, &document);
    }
}

}  // namespace kalvex::sources
