// The link of one remote variable to its source, with the report values and the states of their
// requests. The remote variable owns it. Main thread.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/ScriptDocument.h"
#include "value/ArchiveValueList.h"
#include "value/Status.h"
#include "value/Value.h"
#include "vantrel/Requests.h"

namespace kalvex::sources {

class CClientInterface;
class CInterfaceClientConnection;
class CVarReg;

enum RequestState {
    RequestNone = 0,     // nothing asked for, or cancelled
    RequestWaiting = 1,  // a request is with the connection
    RequestReady = 2,    // there is a value, from the server or from the script
    RequestFailed = 3,   // no connection, or the server answered with an error
};

struct ReportSlot {
    value::CVal m_value;
    vantrel::RequestId m_request = 0;
    RequestState m_state = RequestNone;
};

class CInterfaceObj final : public vantrel::AnswerWindow {
  public:
    CInterfaceObj(engine::CKalvexDoc& document, CClientInterface& client, std::string_view source,
                  std::string_view variable);

    engine::CKalvexDoc& GetDocument() const { return m_document; }
    const std::string& GetSource() const { return m_strSource; }
    const std::string& GetVariable() const { return m_strVariable; }

    // The connection of the source, null while there is none.
    CInterfaceClientConnection* GetConnection();

    // The registered object; the connection sets and clears it as it binds the link.
    void SetVarVal(CVarReg* variable) { m_pVarVal = variable; }
    const CVarReg* GetVarVal() const { return m_pVarVal; }

    // The value that reads of the current data see: the snapshot under a lock, otherwise the live
    // one. Null when the variable is not registered.
    value::CVal* CurrentValue();

    // A value may be read: it is there and not unknown, unless unknown values are to be taken.
    bool IsUsable(value::ValueKind kind) { return FindValue(kind, false) != nullptr; }
    // Null where nothing is to be had, and for an unusable value unless the check is skipped.
    const value::CVal* FindValue(value::ValueKind kind, bool skipCheck);

    // The slot of a report kind, null for another kind.
    ReportSlot* FindSlot(value::ValueKind kind);
    // No answer is outstanding; true for the current value.
    bool IsAnswered(value::ValueKind kind);
    RequestState GetRequestState(value::ValueKind kind);  // of a report kind or the archive
    const value::CArchiveValueList& GetArchValues() const { return m_ArchValues; }

    bool IsLocked() const { return m_fLocked; }
    void SetLocked(bool flag);
    bool IsIgnoreUnknown() const { return m_fIgnoreUnknown; }
    void SetIgnoreUnknown(bool flag) { m_fIgnoreUnknown = flag; }

    // False without a connection, in which case nothing happens to the server's data.
    bool Write(value::CVal value);  // the current value, here and on the server
    void Assign(value::ValueKind kind, value::CVal value);
    bool Request(value::ValueKind kind, std::int64_t from, std::int64_t to);
    bool Put(value::ValueKind kind, std::int64_t time, value::CVal value, bool send);
    bool PutArchive(value::CArchiveValueList& list);
    bool Order(vantrel::PeriodAction action, value::ValueKind kind, std::int64_t time);

    // Lets go of all that waits for the server.
    void CancelAll();
    void OnAnswer(value::ValueKind kind, vantrel::RequestRecord record) override;

  private:
    struct Outstanding {
        vantrel::RequestId* id;
        RequestState* state;
    };

    void NoteChange();
    Outstanding FindRequest(value::ValueKind kind);
    void Cancel(value::ValueKind kind);

    engine::CKalvexDoc& m_document;
    CClientInterface& m_client;
    std::string m_strSource;
    std::string m_strVariable;
    CInterfaceClientConnection* m_connection = nullptr;  // once found it stays
    std::size_t m_connectionsSeen = 0;                   // where it was not found
    CVarReg* m_pVarVal = nullptr;
    value::CVal m_LockedVal;
    bool m_fLocked = false;
    bool m_fIgnoreUnknown = false;
    std::array<ReportSlot, value::kReportKinds.size()> m_slots;
    value::CArchiveValueList m_ArchValues;
    vantrel::RequestId m_nArchRequest = 0;
    RequestState m_eArchState = RequestNone;
};

}  // namespace kalvex::sources
