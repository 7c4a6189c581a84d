#include "app/ScriptDocuments.h"

#include <algorithm>

namespace kalvex::app {

engine::CKalvexDoc* ScriptDocuments::Open(std::string_view path, std::string& error) {
    if (engine::CKalvexDoc* open = Find(path)) return open;
    auto document = std::make_unique<engine::CKalvexDoc>(m_services);
    if (!document->Open(path, error)) return nullptr;
    document->SetView(&m_models[document.get()]);
    m_ticker.Add(*document);
    return m_documents.emplace_back(std::move(document)).get();
}

engine::CKalvexDoc* ScriptDocuments::Find(std::string_view path) const {
    const std::string full = m_services.paths.GetFullPath(path);
    const auto found = std::ranges::find_if(
        m_documents, [&full](const auto& document) { return document->GetPathName() == full; });
    return found == m_documents.end() ? nullptr : found->get();
}

void ScriptDocuments::Close(engine::CKalvexDoc& document) {
    const engine::CKalvexDoc* const closed = &document;
    m_ticker.Remove(document);
    std::erase_if(m_documents, [&document](const auto& open) { return open.get() == &document; });
    m_models.erase(closed);
}

void ScriptDocuments::CloseAll() {
    while (!m_documents.empty()) Close(*m_documents.front());
}

}  // namespace kalvex::app
