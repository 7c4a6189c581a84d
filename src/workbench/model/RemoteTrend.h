// A REMOTE variable as a trend: its archive by requests of its own, so that those of scripts go on
// undisturbed, and its live value as the connection keeps it, LOCK or not. Main thread.
#pragma once

#include <string>
#include <string_view>

#include "engine/ScriptDocument.h"
#include "sources/InterfaceObj.h"
#include "workbench/model/TrendSource.h"

namespace kalvex::workbench {

class RemoteTrend final : public TrendSource, private vantrel::AnswerWindow {
  public:
    // A pointer to a remote variable will do. The variable is looked up at each use, since it goes
    // with a reset. The document and the client interface outlive the trend.
    RemoteTrend(engine::CKalvexDoc& document, std::string_view name)
        : m_document(document), m_name(name) {}
    ~RemoteTrend() override { Cancel(); }
    RemoteTrend(const RemoteTrend&) = delete;
    RemoteTrend& operator=(const RemoteTrend&) = delete;

    std::string GetName() override { return m_name; }
    std::string GetUnit() override;
    bool IsTime() const override { return true; }
    void Request(std::int64_t from, std::int64_t to, Answer answer) override;
    std::optional<TrendPoint> ReadLive(std::int64_t now) override;

  private:
    operands::CVariable* Find() const;
    sources::CInterfaceObj* FindLink() const;
    void Cancel();
    void OnAnswer(value::ValueKind kind, vantrel::RequestRecord record) override;

    engine::CKalvexDoc& m_document;
    std::string m_name;
    sources::CInterfaceClientConnection* m_connection = nullptr;  // of the request under way
    vantrel::RequestId m_request = 0;
    value::CArchiveValueList m_values;
    Answer m_answer;
};

}  // namespace kalvex::workbench
