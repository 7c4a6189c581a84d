#include "engine/LineCache.h"

#include "engine/Procedures.h"
#include "operands/Keywords.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

void LineCache::Fill(const ScriptText& text) {
    Clear();
    const int count = text.GetLineCount();
    std::size_t size = 0;
    for (int n = 0; n < count; ++n) size += text.GetLine(n).size();
    m_text = std::make_unique_for_overwrite<char[]>(size);
    m_lines.reserve(static_cast<std::size_t>(count));
    char* end = m_text.get();
    for (int n = 0; n < count; ++n) {
        char* const start = end;
        end = NormaliseLine(text.GetLine(n), start);
        m_lines.push_back({static_cast<std::uint32_t>(start - m_text.get()),
                           static_cast<std::uint32_t>(end - start)});
        NoteName(n);
    }
}

void LineCache::NoteName(int n) {
    std::string_view line = Get(n);
    if (line.starts_with(':')) {
        m_labels.emplace(text::NextToken(line), n);
    } else if (line.starts_with(operands::Keyword::Procedure) &&
               text::NextToken(line) == operands::Keyword::Procedure) {
        const std::string_view name = ProcedureName(line);
        if (!name.empty()) m_procedures.emplace(name, n);
    }
}

}  // namespace kalvex::engine
