#include "sources/ClientInterface.h"

#include "platform/UserDirectory.h"
#include "sources/DataStates.h"
#include "sources/VariableRemote.h"

namespace kalvex::sources {

namespace {

constexpr std::uint16_t kModuleType = 23;

}  // namespace

std::unique_ptr<vantrel::CClientConnection> CInterfaceSourceList::CreateConnection(
    std::string_view name) {
    std::string_view user = platform::kNobody;
    std::string password;
    for (const CSourceDesc& description : m_services.descriptions) {
        if (description.name != name || description.lost) continue;
        user = description.user;
        password = PlainPassword(description.password);
        break;
    }
    auto connection = std::make_unique<CInterfaceClientConnection>(m_services);
    connection->SetLoginData(user, password);
    platform::CCrypt::SecureEmptyString(password);
    const bool made = connection->Create(kModuleType, name, m_services.clientName,
                                         m_services.transports, m_services.journal);
    ++m_services.changes;
    return made ? std::move(connection) : nullptr;
}

std::string CInterfaceSourceList::PlainPassword(const std::string& password) const {
    const platform::CCrypt* crypt = m_services.crypt;
    return crypt != nullptr && crypt->CanDecryptText(password) ? crypt->DecryptText(password)
                                                               : password;
}

bool CClientInterface::IsConnected(std::string_view source) const {
    const CInterfaceClientConnection* connection = FindConnection(source);
    return connection != nullptr && connection->GetState() == vantrel::StateConnected;
}

// ---- registration

vantrel::CVarVal* CClientInterface::RegisterPlain(std::string_view source,
                                                  std::string_view variable) {
    vantrel::CVarVal* registered = m_SourceList.RegisterVariable(source, variable);
    SubscribeUnlessBlocked();
    return registered;
}

vantrel::CVarVal* CClientInterface::RegisterOwner(CInterfaceObj& owner) {
    vantrel::CVarVal* registered =
        m_SourceList.RegisterVariable(owner.GetSource(), owner.GetVariable());
    if (registered != nullptr) owner.GetConnection()->AttachVarOwner(*registered, owner);
    SubscribeUnlessBlocked();
    return registered;
}

void CClientInterface::UnregisterPlain(std::string_view source, std::string_view variable) {
    m_SourceList.UnRegisterVariable(source, variable);
    SubscribeUnlessBlocked();
}

void CClientInterface::UnregisterOwner(CInterfaceObj& owner) {
    if (CInterfaceClientConnection* connection = owner.GetConnection()) {
        connection->DetachVarOwner(owner);
    }
    m_SourceList.UnRegisterVariable(owner.GetSource(), owner.GetVariable());
    SubscribeUnlessBlocked();
}

void CClientInterface::SubscribeUnlessBlocked() {
    if (m_fSubscribe) m_SourceList.Subscribe();
}

void CClientInterface::BlockSubscribe() {
    m_fSubscribe = false;
    ++m_nSubscribeBlocks;
}

void CClientInterface::UnblockSubscribe(bool reset) {
    m_nSubscribeBlocks = reset ? 0 : m_nSubscribeBlocks - 1;
    if (m_nSubscribeBlocks >= 1) return;
    m_nSubscribeBlocks = 0;
    m_SourceList.Subscribe();
    m_fSubscribe = true;
}

bool CClientInterface::ModifyCurrentByName(std::string_view source, std::string_view variable,
                                           const value::CVal& value) {
    CInterfaceClientConnection* connection = FindConnection(source);
    if (connection == nullptr) return false;
    connection->AddCurrentDataModifyRequest(variable, value);
    connection->MakeCurrentDataModifyRequest();
    return true;
}

// ---- notification of report changes

bool CClientInterface::AddNotifyDoc(value::ValueKind kind, std::string_view source,
                                    engine::CKalvexDoc& document) {
    CInterfaceClientConnection* connection = FindConnection(source);
    return connection != nullptr && connection->AddNotifyDoc(kind, document);
}

void CClientInterface::RemoveNotifyDoc(value::ValueKind kind, std::string_view source,
                                       engine::CKalvexDoc& document) {
    if (CInterfaceClientConnection* connection = FindConnection(source)) {
        connection->RemoveNotifyDoc(kind, document);
    }
}

// ---- remote variables

std::unique_ptr<operands::CVariable> CClientInterface::CreateRemote(engine::CKalvexDoc& document,
                                                                    std::string_view name,
                                                                    std::string_view source,
                                                                    std::string_view variable) {
    auto link = std::make_unique<CInterfaceObj>(document, *this, source, variable);
    RegisterOwner(*link);
    return std::make_unique<CVariableRemote>(name, std::move(link));
}

void CClientInterface::ReleaseRemote(operands::CVariable& variable) {
    CInterfaceObj& link = *variable.GetSourceRecord();
    link.CancelAll();
    UnregisterOwner(link);
}

engine::DataCondition CClientInterface::GetCondition(operands::CVariable& remote,
                                                     value::ValueKind kind) {
    CInterfaceObj& link = *remote.GetSourceRecord();
    engine::DataCondition condition{link.GetSource(), link.GetVariable(),
                                    FindDataState(link, kind)};
    if (condition.state == engine::DataState::Down) {
        const std::uint32_t reason = link.GetConnection()->GetDownReason();
        if (reason != 0) {
            condition.reason =
                CInterfaceClientConnection::GetErrorInfo(reason, m_services.translator);
        }
    }
    return condition;
}

std::optional<std::vector<std::string>> CClientInterface::GetVariableNames(
    std::string_view source) {
    vantrel::CClientConnection* connection = m_SourceList.AddSource(source);
    vantrel::CObjInfoList list;
    if (connection == nullptr || !connection->LoadVarDefList(list)) return std::nullopt;
    std::vector<std::string> names;
    names.reserve(list.size());
    for (const vantrel::CVarDefInfo& definition : list) names.push_back(definition.GetName());
    return names;
}

}  // namespace kalvex::sources
