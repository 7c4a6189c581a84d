// The rows of a CSV file of any length, one at a time. A cell in quotes may hold line ends. One
// thread.
#pragma once

#include <cstddef>
#include <istream>
#include <string>

#include "server/CsvTable.h"

namespace kalvex::server {

// In bytes, more than the longest text takes with each of its characters in two or three.
inline constexpr std::size_t kLongestCsvRow = std::size_t{256} << 10;

class CsvReader {
  public:
    // The stream outlives it. What is beyond the number of cells is left out as by ReadCsv.
    CsvReader(std::istream& stream, std::size_t mostCells)
        : m_stream(stream), m_mostCells(mostCells) {}

    // The next row that is not empty and no comment, by the rules of ReadCsv; its line is the one
    // on which it begins. A row that is too long, or whose quote is not closed by then, is not
    // closed, and reading goes on behind the line with which it was given up. False at the end.
    bool Next(CsvRow& row);

  private:
    bool TakeContent();
    void Follow(char sign);

    std::istream& m_stream;
    const std::size_t m_mostCells;
    char m_separator = 0;  // 0 before the first row
    int m_line = 1;        // that comes next
    bool m_atBegin = true;
    std::string m_content;  // of a row, without its line end
    bool m_isTooLong = false;
    // Where the row has come to.
    bool m_inQuotes = false;
    bool m_behindQuote = false;
    bool m_atCellBegin = true;
};

}  // namespace kalvex::server
