#include "server/CsvReader.h"

#include <string_view>

#include "text/Trim.h"
#include "text/Utf8.h"

namespace kalvex::server {

void CsvReader::Follow(char sign) {
    const bool isSeparator =
        m_separator == 0 ? sign == ',' || sign == ';' || sign == '\t' : sign == m_separator;
    if (sign == '"') {
        // A quote behind the closing one is a doubled one.
        const bool opens = !m_inQuotes && (m_atCellBegin || m_behindQuote);
        m_behindQuote = m_inQuotes;
        m_inQuotes = opens;
        m_atCellBegin = false;
        return;
    }
    if (m_inQuotes) return;
    m_behindQuote = false;
    if (isSeparator) {
        m_atCellBegin = true;
    } else if (sign != ' ' && sign != '\t') {
        m_atCellBegin = false;
    }
}

// False when there is nothing more.
bool CsvReader::TakeContent() {
    m_content.clear();
    m_isTooLong = m_inQuotes = m_behindQuote = false;
    m_atCellBegin = true;
    bool any = false;
    for (;;) {
        char sign = 0;
        if (!m_stream.get(sign)) return any;
        any = true;
        const bool isComment = m_content.starts_with('#');
        if (sign == '\n') {
            ++m_line;
            if (m_isTooLong || isComment || !m_inQuotes) return true;
        }
        if (m_isTooLong || (isComment && m_content.size() > 1)) continue;
        m_isTooLong = m_content.size() >= kLongestCsvRow;
        m_content += sign;
        Follow(sign);
    }
}

bool CsvReader::Next(CsvRow& row) {
    for (;;) {
        const int line = m_line;
        if (!TakeContent()) return false;
        if (m_atBegin && m_content.starts_with(text::kUtf8Mark)) {
            m_content.erase(0, text::kUtf8Mark.size());
        }
        m_atBegin = false;
        std::string_view content = m_content;
        if (content.ends_with('\r')) content.remove_suffix(1);
        if (text::Trim(content).empty() || content.starts_with('#')) continue;
        if (m_separator == 0) m_separator = FindCsvSeparator(content);
        row = ReadCsvRow(content, m_separator, line, m_mostCells);
        row.closed = row.closed && !m_isTooLong;
        return true;
    }
}

}  // namespace kalvex::server
