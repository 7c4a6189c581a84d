// A text of lines and cells, as spreadsheets save it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kalvex::server {

struct CsvRow {
    int line = 0;  // of the text, from 1
    std::vector<std::string> cells;
    bool closed = true;  // false: a quote is not closed on its line, or something follows behind it
};

struct CsvBounds {
    std::size_t rows;
    std::size_t cells;  // of a row
};

// The lines that are not empty and do not begin with "#". The separator is the first of comma,
// semicolon and tab in the first of them. A cell in quotes may hold the separator and doubled
// quotes. A byte order mark and the CR of a line end are taken off, and blanks around a cell that
// has no quotes. What lies beyond the bounds is left out: a cell and a row too many show that there
// was more.
std::vector<CsvRow> ReadCsv(std::string_view text, const CsvBounds& bounds);

// ---- the parts of it

// Of a first line that is not empty.
char FindCsvSeparator(std::string_view content);
// A line without its end. What is in quotes may hold line ends here.
CsvRow ReadCsvRow(std::string_view text, char separator, int line, std::size_t mostCells);

// The cell as it has to stand to be read as this text, line ends included, whatever the separator.
std::string CsvCell(std::string_view text);

}  // namespace kalvex::server
