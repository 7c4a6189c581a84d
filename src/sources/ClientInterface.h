// The data sources of the process: the connections and the registration of remote variables. Main
// thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/ScriptSources.h"
#include "platform/Crypt.h"
#include "platform/LogSink.h"
#include "platform/Translator.h"
#include "platform/Users.h"
#include "sources/InterfaceClientConnection.h"
#include "sources/InterfaceObj.h"
#include "vantrel/SourceList.h"

namespace kalvex::sources {

// The login of a source. A source needs no description to be reached.
struct CSourceDesc {
    std::string name;
    std::string user;
    std::string password;  // plain, or protected by CCrypt::EncryptText
    bool lost = false;     // the password is protected by a key that is not there: no login
};

// The world of the sources. Nothing referred to is owned; all of it outlives the client interface.
struct SourceServices {
    platform::LogSink& log;
    const platform::Translator& translator;
    const platform::Users& users;
    vantrel::TransportFactory& transports;
    vantrel::RequestJournal* journal = nullptr;  // none where nobody keeps account
    std::vector<CSourceDesc> descriptions = {};
    const platform::CCrypt* crypt = nullptr;  // none where the passwords are plain
    std::string clientName = "Kalvex";        // by which the servers know this process
    ConsoleEvents* console = nullptr;         // of a process that is a console of a module
    bool definitionsChanged = false;          // definitions have come since the flag was cleared
    std::uint64_t changes = 0;                // see ScriptSources::GetChangeCount
};

class CInterfaceSourceList final : public vantrel::CSourceList {
  public:
    explicit CInterfaceSourceList(SourceServices& services) : m_services(services) {}

    CInterfaceClientConnection* Find(std::string_view name) const {
        return static_cast<CInterfaceClientConnection*>(Get(name));
    }

  protected:
    std::unique_ptr<vantrel::CClientConnection> CreateConnection(std::string_view name) override;

  private:
    std::string PlainPassword(const std::string& password) const;

    SourceServices& m_services;
};

// Outlives the documents.
class CClientInterface final : public engine::ScriptSources {
  public:
    explicit CClientInterface(SourceServices services)
        : m_services(std::move(services)), m_SourceList(m_services) {}

    const CInterfaceSourceList& SourceList() const { return m_SourceList; }
    CInterfaceSourceList& SourceList() { return m_SourceList; }
    SourceServices& Services() { return m_services; }
    CInterfaceClientConnection* FindConnection(std::string_view source) const {
        return m_SourceList.Find(source);
    }
    bool IsConnected(std::string_view source) const;

    // Registrations reach the server at once, or with the end of the blocks.
    vantrel::CVarVal* RegisterPlain(std::string_view source, std::string_view variable);
    vantrel::CVarVal* RegisterOwner(CInterfaceObj& owner);
    void UnregisterPlain(std::string_view source, std::string_view variable);
    void UnregisterOwner(CInterfaceObj& owner);
    void BlockSubscribe() override;
    void UnblockSubscribe(bool reset) override;

    // True when the source has a connection.
    bool ModifyCurrentByName(std::string_view source, std::string_view variable,
                             const value::CVal& value);

    bool AddNotifyDoc(value::ValueKind kind, std::string_view source,
                      engine::CKalvexDoc& document) override;
    void RemoveNotifyDoc(value::ValueKind kind, std::string_view source,
                         engine::CKalvexDoc& document) override;

    std::unique_ptr<operands::CVariable> CreateRemote(engine::CKalvexDoc& document,
                                                      std::string_view name,
                                                      std::string_view source,
                                                      std::string_view variable) override;
    void ReleaseRemote(operands::CVariable& variable) override;
    engine::DataCondition GetCondition(operands::CVariable& remote, value::ValueKind kind) override;
    std::uint64_t GetChangeCount() const override { return m_services.changes; }
    std::optional<std::vector<std::string>> GetVariableNames(std::string_view source) override;

  private:
    void SubscribeUnlessBlocked();

    SourceServices m_services;
    CInterfaceSourceList m_SourceList;
    bool m_fSubscribe = true;
    int m_nSubscribeBlocks = 0;
};

}  // namespace kalvex::sources
