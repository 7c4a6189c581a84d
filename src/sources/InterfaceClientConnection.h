// A connection to one data server as scripts use it: who is bound to which variable, what goes to
// the log, which documents hear of report changes. Main thread.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantrel/ClientConnection.h"

namespace kalvex::engine {
class CKalvexDoc;
}  // namespace kalvex::engine

namespace kalvex::sources {

class CInterfaceObj;
class ConsoleEvents;
struct SourceServices;

// The local copy of a server variable, which several links share.
class CVarReg : public vantrel::CVarVal {
  public:
    // `changes` counts the values that come, with those of all other variables.
    CVarReg(std::string_view name, std::uint64_t& changes)
        : vantrel::CVarVal(name), m_changes(changes) {}

    const std::vector<CInterfaceObj*>& Owners() const { return m_arrOwners; }
    void AddOwner(CInterfaceObj& owner) { m_arrOwners.push_back(&owner); }
    void RemoveOwner(CInterfaceObj& owner) { std::erase(m_arrOwners, &owner); }

    // Null before the definition has come; the connection owns it.
    const vantrel::CVarDefInfo* GetDefInfo() const { return m_pDefInfo; }
    void SetDefInfo(const vantrel::CVarDefInfo* definition) { m_pDefInfo = definition; }

    // The access error with which the server has answered the subscription: 0 where it does not
    // have the variable; nothing where it has, or has not answered yet.
    std::optional<std::uint16_t> GetRefusal() const { return m_refusal; }
    void SetRefusal(std::optional<std::uint16_t> refusal) { m_refusal = refusal; }
    void SetValue(value::CVal value) override {
        m_refusal.reset();
        ++m_changes;
        vantrel::CVarVal::SetValue(std::move(value));
    }

  private:
    std::vector<CInterfaceObj*> m_arrOwners;
    const vantrel::CVarDefInfo* m_pDefInfo = nullptr;
    std::optional<std::uint16_t> m_refusal;
    std::uint64_t& m_changes;
};

// The same in a console.
class CVarRC final : public CVarReg {
  public:
    // The console outlives the variable.
    CVarRC(std::string_view name, std::uint64_t& changes, ConsoleEvents& console)
        : CVarReg(name, changes), m_console(console) {}

    void SetValue(value::CVal value) override;
    void SetControlValue(value::CVal value) override;

  private:
    ConsoleEvents& m_console;
};

class CInterfaceClientConnection : public vantrel::CClientConnection {
  public:
    // The services outlive the connection.
    explicit CInterfaceClientConnection(SourceServices& services) : m_services(services) {}

    // Current data has come in since the last connect.
    bool IsDataReady() const { return m_fDataReady; }

    // Why there is no connection, a ConnectionReason; 0 while there is one, and before the first
    // attempt has ended.
    std::uint32_t GetDownReason() const { return m_downReason; }

    // The login of the source, or that of the user at the keyboard where the source has none.
    void GetLoginData(std::string& user, platform::Secret& password) const override;

    // Binds a link to its variable, which has been registered, and lets it go before the variable
    // is unregistered.
    void AttachVarOwner(vantrel::CVarVal& variable, CInterfaceObj& owner);
    void DetachVarOwner(CInterfaceObj& owner);

    // Documents that hear of changes in reports of a kind, each once; false when the kind is none
    // of a report or the document is there already. Not owned.
    bool AddNotifyDoc(value::ValueKind kind, engine::CKalvexDoc& document);
    void RemoveNotifyDoc(value::ValueKind kind, engine::CKalvexDoc& document);

    // Logs an error about a server variable in the terms of each script that uses it. The text with
    // the variable's name in brackets behind it.
    std::string LogVariableError(std::string_view text, std::string_view variable);

  protected:
    std::unique_ptr<vantrel::CVarVal> CreateVarVal(std::string_view name) override;
    bool IsVarInUse(const vantrel::CVarVal& variable) const override;
    std::uint32_t GetSubscribeFlags(const vantrel::CVarVal& variable) const override;
    // A script that is started late does harm, and so does whatever else a console orders.
    bool SendsWritesAgain() const override;

    void OnConnectionFault(vantrel::ConnectionFault fault, std::uint32_t code) override;
    void OnServerAccess(bool denied, std::string_view text) override;
    void OnConnect() override;
    void OnDisconnect(std::uint32_t reason) override;
    void OnVariableList() override;
    void OnDataArrived() override;
    void OnVarAccessError(const vantrel::RequestRecord& record) override;
    void OnCurrentDataModifyAck(const vantrel::RequestRecord& record) override;
    void OnCurrentDataModifyError(const vantrel::RequestRecord& record) override;
    void OnReportModifyError(value::ValueKind kind, const vantrel::RequestRecord& record) override;
    void OnArchiveModifyError(const vantrel::RequestRecord& record) override;
    void OnPeriodError(vantrel::PeriodAction action, value::ValueKind kind,
                       const vantrel::RequestRecord& record) override;
    void OnOrderLost(const vantrel::LostOrder& order) override;
    void OnReportChange(value::ValueKind kind, std::int64_t time) override;
    void OnRemoteLogMessage(int level, std::int64_t time, std::string_view text) override;

  private:
    void Log(const char* polish, std::initializer_list<std::string_view> arguments, int level);
    std::string WhyNot(const vantrel::RequestRecord& record) const;
    std::vector<engine::CKalvexDoc*>* FindNotifyDocs(value::ValueKind kind);

    SourceServices& m_services;
    bool m_fDataReady = false;
    std::uint32_t m_downReason = 0;
    // Orders lost since there was no server: those that the log has had, by variable and text, and
    // the number of the others.
    std::set<std::pair<std::string, std::string>> m_lostTold;
    std::size_t m_lostUntold = 0;
    std::array<std::vector<engine::CKalvexDoc*>, value::kReportKinds.size()> m_notifyDocs;
};

}  // namespace kalvex::sources
