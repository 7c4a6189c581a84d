// Life of the connection and its variables. Requests: ClientRequests.cpp.
#include "vantrel/ClientConnection.h"

#include <random>
#include <utility>

namespace kalvex::vantrel {

namespace {

// A server may come to let the user in while the module runs, so a refused login is not for good.
constexpr int kChecksBetweenLogins = 60;

constexpr std::uint32_t kModuleWishes = 577;
static_assert((kModuleWishes & SubscribeFlag::ReportChanges) != 0);

// 128 random bits.
std::string MakeToken() {
    std::random_device random;
    std::string token;
    for (int part = 0; part < 4; ++part) token += std::to_string(random()) + '.';
    return token;
}

CObjInfoList AsList(std::vector<VariableDefinition> definitions) {
    CObjInfoList list;
    list.reserve(definitions.size());
    for (VariableDefinition& definition : definitions) list.emplace_back(std::move(definition));
    return list;
}

}  // namespace

bool CClientConnection::Create(std::uint16_t moduleType, std::string_view source,
                               std::string_view clientName, TransportFactory& transports,
                               RequestJournal* journal) {
    m_moduleType = moduleType;
    m_server = source;
    m_client = clientName;
    m_journal = journal;
    m_token = MakeToken();
    std::uint32_t reason = 0;
    m_transport = transports.Connect(source, *this, reason);
    if (!m_transport) {
        OnConnectionFault(ConnectionFault::Create, reason);
        return false;
    }
    Open();
    return true;
}

void CClientConnection::Open() {
    m_state = m_transport->Open() ? StateOpening : StateDown;
}

void CClientConnection::SetLoginData(std::string_view user, std::string_view password) {
    m_userName = user;
    m_password = password;
}

void CClientConnection::GetLoginData(std::string& user, platform::Secret& password) const {
    user = m_userName;
    password = m_password;
}

LoginRequest CClientConnection::MakeLoginRequest() const {
    LoginRequest login;
    login.moduleType = m_moduleType;
    login.clientName = m_client;
    GetLoginData(login.user, login.password);
    return login;
}

void CClientConnection::Login() {
    if (m_checksToLogin > 0) {
        m_checksToLogin = 0;
        Open();
    } else if (m_state == StateLogin || m_state == StateConnected) {
        m_openAgain = true;
        m_transport->Close(ReasonLoginChanged);
    }
}

void CClientConnection::CheckConnection() {
    if (m_checksToLogin > 0 && --m_checksToLogin == 0) Open();
    m_transport->Check();
}

// ---- variables

CVarVal& CClientConnection::RegisterVariable(std::string_view name) {
    Record({.operation = "RegisterVariable", .variable = std::string(name)});
    Registration* registration = nullptr;
    const auto found = m_byName.find(name);
    if (found != m_byName.end()) {
        registration = found->second;
        registration->dropped = false;
    } else {
        m_arrVariables.push_back(std::make_unique<Registration>());
        registration = m_arrVariables.back().get();
        registration->pVarVal = CreateVarVal(name);
        registration->index = m_arrVariables.size() - 1;
        m_byName.emplace(registration->pVarVal->GetName(), registration);
        Touch(*registration);
    }
    return *registration->pVarVal;
}

void CClientConnection::UnRegisterVariable(std::string_view name) {
    Record({.operation = "UnRegisterVariable", .variable = std::string(name)});
    const auto found = m_byName.find(name);
    if (found == m_byName.end()) return;
    Registration& registration = *found->second;
    if (IsVarInUse(*registration.pVarVal)) return;
    registration.dropped = true;
    Touch(registration);
}

void CClientConnection::Touch(Registration& registration) {
    if (registration.touched) return;
    registration.touched = true;
    m_touched.push_back(&registration);
}

void CClientConnection::Subscribe() {
    Record({.operation = "Subscribe"});
    SubscribeRequest request;
    for (Registration* registration : m_touched) {
        registration->touched = false;
        if (registration->dropped) {
            if (registration->handle != 0) request.removed.push_back(registration->handle);
            Forget(*registration);
        } else if (registration->handle == 0) {
            registration->handle = ++m_lastHandle;
            m_byHandle.emplace(registration->handle, registration);
            request.added.push_back({registration->handle, registration->pVarVal->GetName()});
            request.flags |= GetSubscribeFlags(*registration->pVarVal);
        }
    }
    m_touched.clear();
    if (m_state != StateConnected) return;
    if (request.added.empty() && request.removed.empty()) return;
    m_transport->Send(std::move(request));
}

void CClientConnection::Forget(Registration& registration) {
    m_byName.erase(registration.pVarVal->GetName());
    m_byHandle.erase(registration.handle);
    const std::size_t index = registration.index;
    std::swap(m_arrVariables[index], m_arrVariables.back());
    m_arrVariables[index]->index = index;
    m_arrVariables.pop_back();
}

void CClientConnection::SubscribeAll() {
    SubscribeRequest request;
    for (const auto& registration : m_arrVariables) {
        registration->told = false;
        if (registration->handle == 0) continue;
        request.added.push_back({registration->handle, registration->pVarVal->GetName()});
        request.flags |= GetSubscribeFlags(*registration->pVarVal);
    }
    if (!request.added.empty()) m_transport->Send(std::move(request));
}

CVarVal* CClientConnection::GetVarVal(std::string_view name) const {
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? nullptr : found->second->pVarVal.get();
}

bool CClientConnection::IsSubscribed(std::string_view name) const {
    const auto found = m_byName.find(name);
    return found != m_byName.end() && found->second->handle != 0;
}

const CVarDefInfo* CClientConnection::GetVarDefInfo(std::string_view name) const {
    const auto found = m_definitions.find(std::string(name));
    return found == m_definitions.end() ? nullptr : &found->second;
}

bool CClientConnection::LoadVarDefList(CObjInfoList& list) {
    std::vector<VariableDefinition> definitions;
    if (!m_transport->LoadVariableList(MakeLoginRequest(), definitions)) return false;
    list = AsList(std::move(definitions));
    return true;
}

void CClientConnection::AskVarDefList(std::function<void(std::optional<CObjInfoList>)> done) {
    m_transport->AskVariableList(
        MakeLoginRequest(),
        [done = std::move(done)](std::optional<std::vector<VariableDefinition>> definitions) {
            done(definitions ? std::optional(AsList(*std::move(definitions))) : std::nullopt);
        });
}

// Whatever the lost source has said last is not what holds now.
void CClientConnection::MarkVarValError() {
    for (const auto& registration : m_arrVariables) {
        registration->pVarVal->Value().AddStatus(value::Status::Unknown |
                                                 value::Status::TransmissionError);
    }
}

// ---- what the transport tells

void CClientConnection::OnOpened() {
    m_state = StateLogin;
    m_openFaultTold = false;
    LoginRequest login = MakeLoginRequest();
    login.token = m_token;
    login.changesSince = m_lastChange;
    m_transport->Send(std::move(login));
}

void CClientConnection::OnFault(ConnectionFault fault, std::uint32_t reason) {
    if (fault == ConnectionFault::Open) {
        GoDown();
        if (m_openFaultTold) return;
        m_openFaultTold = true;
    }
    OnConnectionFault(fault, reason);
}

void CClientConnection::OnClosed(std::uint32_t reason) {
    const std::uint16_t state = m_state;
    GoDown();
    if (state == StateConnected) {
        OnDisconnect(reason);
    } else if (state == StateLogin && !m_openAgain) {
        OnFault(ConnectionFault::Open, reason);
    }
    if (!m_openAgain) return;
    m_openAgain = false;
    Open();
}

void CClientConnection::GoDown() {
    const bool wasConnected = m_state == StateConnected;
    m_state = StateDown;
    m_outbox.clear();
    HoldWrites(wasConnected);
    if (!wasConnected) FailOutstanding();
}

void CClientConnection::OnMessage(ServerMessage message) {
    if (m_state != StateConnected && !std::holds_alternative<LoginResult>(message)) return;
    std::visit([this](auto& content) { Receive(content); }, message);
}

void CClientConnection::Receive(LoginResult& message) {
    if (m_state != StateLogin) return;
    const bool denied = message.code != 0;
    OnServerAccess(denied, message.text);
    if (denied) {
        GoDown();
        m_checksToLogin = kChecksBetweenLogins;
        m_transport->Close(ReasonLoginRefused);
        return;
    }
    m_state = StateConnected;
    m_answersOrders = message.sequence.has_value();
    // A server that has come less far has another store.
    if (!m_lastChange || message.sequence.value_or(0) < *m_lastChange) {
        m_lastChange = message.sequence;
    }
    OnConnect();
    SubscribeAll();
    SendOutbox();
}

void CClientConnection::Receive(VariableDefinitions& message) {
    for (VariableDefinition& definition : message.definitions) {
        std::string name = definition.name;
        m_definitions.insert_or_assign(std::move(name), CVarDefInfo(std::move(definition)));
    }
    if (message.last) OnVariableList();
}

void CClientConnection::Receive(ValueUpdates& message) {
    for (ValueUpdates::Entry& entry : message.entries) {
        const auto found = m_byHandle.find(entry.handle);
        if (found == m_byHandle.end()) continue;
        CVarVal& variable = *found->second->pVarVal;
        if (std::exchange(found->second->told, true)) {
            variable.SetControlValue(std::move(entry.value));
        } else {
            variable.SetValue(std::move(entry.value));
        }
    }
    if (message.last) OnDataArrived();
}

// A variable that had been there is gone or is not to be seen any more: so are its value and its
// definition.
void CClientConnection::Receive(AccessErrors& message) {
    bool definitionsGone = false;
    for (const AccessErrors::Entry& entry : message.entries) {
        const auto found = m_byHandle.find(entry.handle);
        if (found == m_byHandle.end()) continue;
        found->second->told = false;
        CVarVal& variable = *found->second->pVarVal;
        if (variable.Value().GetType() != value::ValueType::None) {
            variable.SetValue(value::CVal());
            variable.Value().SetStatus(value::Status::Unknown);
        }
        definitionsGone = m_definitions.erase(variable.GetName()) != 0 || definitionsGone;
    }
    if (definitionsGone) OnVariableList();
    for (const AccessErrors::Entry& entry : message.entries) {
        const auto found = m_byHandle.find(entry.handle);
        if (found == m_byHandle.end()) continue;
        RequestRecord record;
        record.result = entry.code;
        record.variable = found->second->pVarVal->GetName();
        OnVarAccessError(record);
    }
}

void CClientConnection::Receive(ReportChange& message) {
    if (message.sequence != 0) m_lastChange = message.sequence;
    OnReportChange(message.kind, message.time);
}

void CClientConnection::Receive(LogMessage& message) {
    OnRemoteLogMessage(message.level, message.time, message.text);
}

// ---- hooks

std::unique_ptr<CVarVal> CClientConnection::CreateVarVal(std::string_view name) {
    return std::make_unique<CVarVal>(name);
}

bool CClientConnection::IsVarInUse(const CVarVal&) const {
    return false;
}

std::uint32_t CClientConnection::GetSubscribeFlags(const CVarVal&) const {
    return kModuleWishes;
}

void CClientConnection::OnConnectionFault(ConnectionFault, std::uint32_t) {}
void CClientConnection::OnServerAccess(bool, std::string_view) {}
void CClientConnection::OnConnect() {}

void CClientConnection::OnDisconnect(std::uint32_t) {
    MarkVarValError();
    FailOutstanding();
}

void CClientConnection::OnVariableList() {}
void CClientConnection::OnDataArrived() {}
void CClientConnection::OnVarAccessError(const RequestRecord&) {}
void CClientConnection::OnCurrentDataModifyAck(const RequestRecord&) {}
void CClientConnection::OnCurrentDataModifyError(const RequestRecord&) {}
void CClientConnection::OnReportModifyError(value::ValueKind, const RequestRecord&) {}
void CClientConnection::OnArchiveModifyError(const RequestRecord&) {}
void CClientConnection::OnPeriodError(PeriodAction, value::ValueKind, const RequestRecord&) {}
void CClientConnection::OnAcknowledgement(const RequestRecord&) {}
void CClientConnection::OnOrderLost(const LostOrder&) {}
void CClientConnection::OnReportChange(value::ValueKind, std::int64_t) {}
void CClientConnection::OnRemoteLogMessage(int, std::int64_t, std::string_view) {}

}  // namespace kalvex::vantrel
