// The variables of the data source that was looked at last, kept until another one is asked for or
// they are to be loaded anew. Main thread; engine texts.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "vantrel/SourceList.h"

namespace kalvex::workbench {

class SourceVariables {
  public:
    enum class Answer {
        NoName,  // nothing was asked for
        Ready,   // the list is that of the source
        Asked,   // the answer comes to the one who asks
    };
    // Null when the variables are not to be had. The list is for the call alone.
    using Taker = std::function<void(const vantrel::CObjInfoList* list)>;

    // The sources outlive this, or end without a further answer.
    explicit SourceVariables(vantrel::CSourceList& sources) : m_sources(sources) {}
    SourceVariables(const SourceVariables&) = delete;
    SourceVariables& operator=(const SourceVariables&) = delete;

    // Makes the connection of the source where there is none. `done` is called once when this is
    // Asked, from within the call or later; not when this is gone by then.
    Answer Ask(std::string_view source, Taker done);

    // The next question goes to the source whatever is kept.
    void MarkReload() { m_reload = true; }
    bool IsReloadMarked() const { return m_reload; }

    // What is kept: of the source that was asked last, empty until it answers.
    const vantrel::CObjInfoList& List() const { return m_list; }
    // Of the list; empty while there is none.
    const std::string& GetSource() const { return m_source; }

  private:
    vantrel::CSourceList& m_sources;
    vantrel::CObjInfoList m_list;
    std::string m_source;
    bool m_reload = false;
    std::uint64_t m_questions = 0;
    const std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

}  // namespace kalvex::workbench
