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

// Hears of documents as they come and go, whoever opens and closes them.
class DocumentsListener {
  public:
    virtual ~DocumentsListener() = default;
    virtual void OnScriptOpened(engine::CKalvexDoc&) {}
    // The document and its model are there until this returns.
    virtual void OnScriptClosing(engine::CKalvexDoc&) {}
};

class ScriptDocuments {
  public:
    // The services outlive the documents.
    explicit ScriptDocuments(const engine::DocumentServices& services) : m_services(services) {}
    ~ScriptDocuments() { CloseAll(); }

    // None by default; not owned.
    void SetListener(DocumentsListener* listener) { m_listener = listener; }
    ScriptDocuments(const ScriptDocuments&) = delete;
    ScriptDocuments& operator=(const ScriptDocuments&) = delete;

    // The document of that file, which is opened unless it is open; null with the system's words
    // in `error` when it does not open.
    engine::CKalvexDoc* Open(std::string_view path, std::string& error);
    // An empty document without a file.
    engine::CKalvexDoc& OpenNew();
    bool IsOpen(const engine::CKalvexDoc& document) const;
    // By full or short path; null when it is not open.
    engine::CKalvexDoc* Find(std::string_view path) const;
    // Gives an open document another file, or none for an empty path; nobody else does.
    void SetFile(engine::CKalvexDoc& document, std::string_view path);
    // Ends the document's run and destroys it; while documents are held, when they no longer are.
    void Close(engine::CKalvexDoc& document);
    void CloseAll();

    // While a person is asked, who asks may stand in the middle of a document's work, and
    // everything else goes on: what is closed meanwhile has left the list and is not destroyed yet.
    void Hold() { ++m_holds; }
    void Release();

    const std::vector<std::unique_ptr<engine::CKalvexDoc>>& All() const { return m_documents; }
    // The marks of a document that is open.
    workbench::DocumentModel& ModelOf(const engine::CKalvexDoc& document) {
        return m_models.at(&document);
    }
    engine::TickRunner& Ticker() { return m_ticker; }

  private:
    std::unique_ptr<engine::CKalvexDoc> Make();
    engine::CKalvexDoc& Take(std::unique_ptr<engine::CKalvexDoc> document);
    void Destroy(std::unique_ptr<engine::CKalvexDoc> document);

    const engine::DocumentServices& m_services;
    std::map<const engine::CKalvexDoc*, workbench::DocumentModel> m_models;
    std::vector<std::unique_ptr<engine::CKalvexDoc>> m_documents;
    std::multimap<std::string, engine::CKalvexDoc*> m_byPath;   // the open ones
    std::vector<std::unique_ptr<engine::CKalvexDoc>> m_closed;  // while they are held
    engine::TickRunner m_ticker;
    DocumentsListener* m_listener = nullptr;
    int m_holds = 0;
};

}  // namespace kalvex::app
