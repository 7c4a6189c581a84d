#include "app/ScriptDocuments.h"

#include <algorithm>

namespace kalvex::app {

engine::CKalvexDoc* CScriptDocuments::Open(std::string_view path, std::string& error) {
    if (engine::CKalvexDoc* open = Find(path)) return open;
    auto document = std::make_unique<engine::CKalvexDoc>(m_services);
    if (!document->Open(path, error)) return nullptr;
    m_ticker.Add(*document);
    return m_arrDocuments.emplace_back(std::move(document)).get();
}

engine::CKalvexDoc* CScriptDocuments::Find(std::string_view path) const {
    const std::string full = m_services.paths.GetFullPath(path);
    const auto found = std::ranges::find_if(
        m_arrDocuments, [&full](const auto& document) { return document->GetPathName() == full; });
    return found == m_arrDocuments.end() ? nullptr : found->get();
}

void CScriptDocuments::Close(engine::CKalvexDoc& document) {
    m_ticker.Remove(document);
    std::erase_if(m_arrDocuments,
                  [&document](const auto& open) { return open.get() == &document; });
}

void CScriptDocuments::CloseAll() {
    while (!m_arrDocuments.empty()) Close(*m_arrDocuments.front());
}

}  // namespace kalvex::app
