// Rows of fields as a terminal or a program shall see them. UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kalvex::kalvexctl {

enum class Colour { None, Green, Yellow, Red, Grey };

struct Cell {
    std::string text = {};
    Colour colour = Colour::None;
};

struct Row {
    std::vector<Cell> cells;
    std::string below = {};  // on a terminal in a line of its own, indented; empty: none
};

struct Screen {
    std::size_t width = 80;
    bool coloured = false;
};

// With tabs between the fields, and what would spoil the line replaced by blanks.
std::string PipeLine(const std::vector<Cell>& cells);

// Aligned, none longer than the screen is wide; an empty head is left out.
std::vector<std::string> ScreenLines(const std::vector<std::string>& head,
                                     const std::vector<Row>& rows, const Screen& screen);

// Without control characters, which a terminal or another program would take for its own.
std::string Printable(std::string_view text);

}  // namespace kalvex::kalvexctl
