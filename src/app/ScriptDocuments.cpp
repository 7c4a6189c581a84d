#include "app/ScriptDocuments.h"

#include <algorithm>
#include <utility>

namespace kalvex::app {

engine::CKalvexDoc* ScriptDocuments::Open(std::string_view path, std::string& error) {
    if (engine::CKalvexDoc* open = Find(path)) return open;
    std::unique_ptr<engine::CKalvexDoc> document = Make();
    if (document->Open(path, error)) return &Take(std::move(document));
    Destroy(std::move(document));
    return nullptr;
}

engine::CKalvexDoc& ScriptDocuments::OpenNew() {
    return Take(Make());
}

std::unique_ptr<engine::CKalvexDoc> ScriptDocuments::Make() {
    auto text = std::make_unique<workbench::EditedText>();
    workbench::EditedText& edited = *text;
    auto document = std::make_unique<engine::CKalvexDoc>(m_services, std::move(text));
    workbench::DocumentModel& model = m_models[document.get()];
    model.SetText(edited);
    document->SetView(&model);
    return document;
}

engine::CKalvexDoc& ScriptDocuments::Take(std::unique_ptr<engine::CKalvexDoc> document) {
    m_ticker.Add(*document);
    m_byPath.emplace(document->GetPathName(), document.get());
    engine::CKalvexDoc& taken = *m_documents.emplace_back(std::move(document));
    if (m_listener != nullptr) m_listener->OnScriptOpened(taken);
    return taken;
}

engine::CKalvexDoc* ScriptDocuments::Find(std::string_view path) const {
    const std::string full = m_services.paths.GetFullPath(path);
    const auto found = m_byPath.lower_bound(full);
    return found == m_byPath.end() || found->first != full ? nullptr : found->second;
}

// Of two documents of one path the one that was opened first is found.
void ScriptDocuments::SetFile(engine::CKalvexDoc& document, std::string_view path) {
    document.SetFile(path);
    m_byPath.clear();
    for (const auto& open : m_documents) m_byPath.emplace(open->GetPathName(), open.get());
}

bool ScriptDocuments::IsOpen(const engine::CKalvexDoc& document) const {
    return std::ranges::any_of(m_documents,
                               [&document](const auto& open) { return open.get() == &document; });
}

void ScriptDocuments::Close(engine::CKalvexDoc& document) {
    if (m_listener != nullptr) m_listener->OnScriptClosing(document);
    m_ticker.Remove(document);
    const auto [first, last] = m_byPath.equal_range(document.GetPathName());
    m_byPath.erase(
        std::find_if(first, last, [&](const auto& entry) { return entry.second == &document; }));
    const auto open =
        std::ranges::find(m_documents, &document, &std::unique_ptr<engine::CKalvexDoc>::get);
    std::unique_ptr<engine::CKalvexDoc> closed = std::move(*open);
    m_documents.erase(open);
    if (m_holds == 0) return Destroy(std::move(closed));
    document.ClearRunState();
    m_closed.push_back(std::move(closed));
}

// The model of a document outlives it.
void ScriptDocuments::Destroy(std::unique_ptr<engine::CKalvexDoc> document) {
    const engine::CKalvexDoc* const destroyed = document.get();
    document.reset();
    m_models.erase(destroyed);
}

void ScriptDocuments::Release() {
    if (--m_holds != 0) return;
    for (std::unique_ptr<engine::CKalvexDoc>& document : std::exchange(m_closed, {})) {
        Destroy(std::move(document));
    }
}

void ScriptDocuments::CloseAll() {
    while (!m_documents.empty()) Close(*m_documents.front());
}

}  // namespace kalvex::app
