// A text of lines and cells, as spreadsheets save it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kalvex::server {

struct CsvRow {
    int line = 0;  // of the text, from 1
    std::vector<std::string> cells;
    bool closed = true;  // false: a quote is not closed on its line, or something follows behind it
};

// The lines that are not empty and do not begin with "#". The separator is the first of comma,
// semicolon and tab in the first of them. A cell in quotes may hold the separator and doubled
// quotes. A byte order mark and the CR of a line end are taken off, and blanks around a cell that
// has no quotes.
std::vector<CsvRow> ReadCsv(std::string_view text);

}  // namespace kalvex::server
