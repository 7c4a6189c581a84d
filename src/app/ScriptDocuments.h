// The open script documents, in the order of their opening. Main thread.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/ScriptDocument.h"
#include "engine/Tick.h"
#include "workbench/model/DocumentModel.h"

namespace kalvex::app {

class ScriptDocuments {
  public:
    // The services outlive the documents.
    explicit ScriptDocuments(const engine::DocumentServices& services) : m_services(services) {}
    ~ScriptDocuments() { CloseAll(); }
    ScriptDocuments(const ScriptDocuments&) = delete;
    ScriptDocuments& operator=(const ScriptDocuments&) = delete;

    // The document of that file, which is opened unless it is open; null with the system's words
    // in `error` when it does not open.
    engine::CKalvexDoc* Open(std::string_view path, std::string& error);
    // By full or short path; null when it is not open.
    engine::CKalvexDoc* Find(std::string_view path) const;
    // Ends the document's run and destroys it.
    void Close(engine::CKalvexDoc& document);
    void CloseAll();

    const std::vector<std::unique_ptr<engine::CKalvexDoc>>& All() const { return m_documents; }
    // The marks of a document that is open.
    workbench::DocumentModel& ModelOf(const engine::CKalvexDoc& document) {
        return m_models.at(&document);
    }
    engine::TickRunner& Ticker() { return m_ticker; }

  private:
    const engine::DocumentServices& m_services;
    std::map<const engine::CKalvexDoc*, workbench::DocumentModel> m_models;
    std::vector<std::unique_ptr<engine::CKalvexDoc>> m_documents;
    engine::TickRunner m_ticker;
};

}  // namespace kalvex::app
