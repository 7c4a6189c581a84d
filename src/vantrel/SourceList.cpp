#include "vantrel/SourceList.h"

namespace kalvex::vantrel {

CClientConnection* CSourceList::Get(std::string_view name) const {
    for (const auto& connection : m_connections) {
        if (connection->GetServerName() == name) return connection.get();
    }
    return nullptr;
}

CClientConnection* CSourceList::AddSource(std::string_view name) {
    if (CClientConnection* connection = Get(name)) return connection;
    std::unique_ptr<CClientConnection> connection = CreateConnection(name);
    if (!connection) return nullptr;
    m_connections.push_back(std::move(connection));
    return m_connections.back().get();
}

CVarVal* CSourceList::RegisterVariable(std::string_view source, std::string_view variable) {
    CClientConnection* connection = AddSource(source);
    return connection == nullptr ? nullptr : &connection->RegisterVariable(variable);
}

void CSourceList::UnRegisterVariable(std::string_view source, std::string_view variable) {
    if (CClientConnection* connection = Get(source)) {
        connection->UnRegisterVariable(variable);
    }
}

void CSourceList::Subscribe() {
    for (const auto& connection : m_connections) connection->Subscribe();
}

void CSourceList::CheckConnections() {
    for (const auto& connection : m_connections) connection->CheckConnection();
}

void CSourceList::Login() {
    for (const auto& connection : m_connections) connection->Login();
}

}  // namespace kalvex::vantrel
