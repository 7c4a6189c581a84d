#include "workbench/model/SourceVariables.h"

#include <optional>
#include <utility>

namespace kalvex::workbench {

SourceVariables::Answer SourceVariables::Ask(std::string_view source, Taker done) {
    if (source.empty()) return Answer::NoName;
    const bool exists = m_sources.Get(source) != nullptr;
    if (exists && !m_reload && m_source == source) return Answer::Ready;
    m_reload = false;
    m_list.clear();
    m_source.clear();
    const std::uint64_t question = ++m_questions;
    vantrel::CClientConnection* const connection = m_sources.AddSource(source);
    if (connection == nullptr) {
        done(nullptr);
        return Answer::Asked;
    }
    connection->AskVarDefList([this, alive = std::weak_ptr(m_alive), question,
                               name = std::string(source),
                               done = std::move(done)](std::optional<vantrel::CObjInfoList> list) {
        if (alive.expired()) return;
        if (!list || question != m_questions) return done(list ? &*list : nullptr);
        m_list = *std::move(list);
        m_source = name;
        done(&m_list);
    });
    return Answer::Asked;
}

}  // namespace kalvex::workbench
