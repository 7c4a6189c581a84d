#include "server/CsvTable.h"

#include <algorithm>

#include "text/Trim.h"
#include "text/Utf8.h"

namespace kalvex::server {

namespace {

// Takes a cell in quotes off the text, up to the separator; false when it is not well formed.
bool TakeQuoted(std::string_view& text, char separator, std::string& cell) {
    for (text.remove_prefix(1);;) {
        const std::size_t quote = text.find('"');
        if (quote == std::string_view::npos) return false;
        cell += text.substr(0, quote);
        text.remove_prefix(quote + 1);
        if (text.empty() || text.front() != '"') break;
        cell += '"';
        text.remove_prefix(1);
    }
    const std::size_t end = std::min(text.find(separator), text.size());
    const bool nothingBehind = text::Trim(text.substr(0, end)).empty();
    text.remove_prefix(end);
    return nothingBehind;
}

}  // namespace

char FindCsvSeparator(std::string_view content) {
    const std::size_t first = content.find_first_of(",;\t");
    return first == std::string_view::npos ? ',' : content[first];
}

CsvRow ReadCsvRow(std::string_view text, char separator, int line, std::size_t mostCells) {
    CsvRow row;
    row.line = line;
    for (;;) {
        std::string& cell = row.cells.emplace_back();
        const std::size_t begin =
            text.find_first_not_of(separator == '\t' ? " " : text::kBlanksAndTabs);
        if (begin != std::string_view::npos && text[begin] == '"') {
            text.remove_prefix(begin);
            row.closed = TakeQuoted(text, separator, cell) && row.closed;
            if (!row.closed) return row;
        } else {
            const std::size_t end = std::min(text.find(separator), text.size());
            cell = text::Trim(text.substr(0, end));
            text.remove_prefix(end);
        }
        if (text.empty() || row.cells.size() > mostCells) return row;
        text.remove_prefix(1);
    }
}

std::vector<CsvRow> ReadCsv(std::string_view text, const CsvBounds& bounds) {
    std::vector<CsvRow> rows;
    if (text.starts_with(text::kUtf8Mark)) text.remove_prefix(text::kUtf8Mark.size());
    char separator = 0;
    for (int line = 1; !text.empty() && rows.size() <= bounds.rows; ++line) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view content = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!content.empty() && content.back() == '\r') content.remove_suffix(1);
        if (text::Trim(content).empty() || content.front() == '#') continue;
        if (separator == 0) separator = FindCsvSeparator(content);
        rows.push_back(ReadCsvRow(content, separator, line, bounds.cells));
    }
    return rows;
}

std::string CsvCell(std::string_view text) {
    const bool isPlain = text.find_first_of(",;\t\"\r\n") == std::string_view::npos &&
                         !text.starts_with('#') && text::Trim(text) == text;
    if (isPlain) return std::string(text);
    std::string cell = "\"";
    for (const char sign : text) {
        if (sign == '"') cell += sign;
        cell += sign;
    }
    return cell + '"';
}

}  // namespace kalvex::server
