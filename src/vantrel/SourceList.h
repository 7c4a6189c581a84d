// The connections of a client by the names of their sources. Main thread.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "vantrel/ClientConnection.h"

namespace kalvex::vantrel {

class CSourceList {
  public:
    CSourceList() = default;
    virtual ~CSourceList() = default;
    CSourceList(const CSourceList&) = delete;
    CSourceList& operator=(const CSourceList&) = delete;

    // The connection of that name, or null; makes none.
    CClientConnection* Get(std::string_view name) const;
    // The same, made when there is none; null when it cannot be made.
    CClientConnection* AddSource(std::string_view name);
    // In order of their making. A connection stays for good.
    const std::vector<std::unique_ptr<CClientConnection>>& Connections() const {
        return m_connections;
    }

    // The variable's local object, null when its source has no connection. The servers hear of it
    // at the next Subscribe.
    CVarVal* RegisterVariable(std::string_view source, std::string_view variable);
    void UnRegisterVariable(std::string_view source, std::string_view variable);

    // For all connections: brings the servers' subscriptions into line; periodic work; logs in
    // anew.
    void Subscribe();
    void CheckConnections();
    void Login();

  protected:
    // Null when there can be no connection to the source.
    virtual std::unique_ptr<CClientConnection> CreateConnection(std::string_view name) = 0;

  private:
    std::vector<std::unique_ptr<CClientConnection>> m_connections;
};

}  // namespace kalvex::vantrel
