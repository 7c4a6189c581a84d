// The documents of the application as an end of the remote console sees them. Main thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/ScriptDocuments.h"

namespace kalvex::app {

// `Host` is a console::ScriptHost of more.
template <class Host>
class HostedScripts : public Host {
  public:
    // The documents outlive it.
    explicit HostedScripts(ScriptDocuments& documents) : m_documents(documents) {}

    engine::CKalvexDoc* FindScript(std::string_view path) final { return m_documents.Find(path); }
    engine::CKalvexDoc* OpenScript(std::string_view path) final {
        std::string error;
        return m_documents.Open(path, error);
    }
    void CloseScript(engine::CKalvexDoc& document) final { m_documents.Close(document); }
    std::vector<engine::CKalvexDoc*> Scripts() final {
        std::vector<engine::CKalvexDoc*> scripts;
        for (const auto& document : m_documents.All()) scripts.push_back(document.get());
        return scripts;
    }
    workbench::DocumentModel& ModelOf(const engine::CKalvexDoc& document) final {
        return m_documents.ModelOf(document);
    }

  private:
    ScriptDocuments& m_documents;
};

}  // namespace kalvex::app
