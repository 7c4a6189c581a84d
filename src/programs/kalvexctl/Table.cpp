#include "programs/kalvexctl/Table.h"

#include <algorithm>
#include <iterator>

#include "text/Characters.h"
#include "text/ControlText.h"

namespace kalvex::kalvexctl {

namespace {

constexpr std::string_view kGap = "  ";
constexpr std::string_view kIndent = "    ";
constexpr std::string_view kPlain = "\033[0m";

// By the numbers of the enumeration.
constexpr std::string_view kColours[] = {"", "\033[32m", "\033[33m", "\033[31m", "\033[90m"};

bool IsFirstByte(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
}

std::size_t WidthOf(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, IsFirstByte));
}

std::string CutTo(std::string_view text, std::size_t width) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsFirstByte(text[i]) && characters++ == width) return std::string(text.substr(0, i));
    }
    return std::string(text);
}

// The last column takes what the others leave.
std::vector<std::size_t> ColumnWidths(const std::vector<Row>& rows, const Screen& screen) {
    std::vector<std::size_t> widths;
    for (const Row& row : rows) {
        if (row.cells.size() > widths.size()) widths.resize(row.cells.size());
        for (std::size_t i = 0; i < row.cells.size(); ++i) {
            const std::size_t width = WidthOf(row.cells[i].text);
            widths[i] = std::max(widths[i], std::min(width, screen.width / 2));
        }
    }
    return widths;
}

std::string ScreenLine(const std::vector<Cell>& cells, const std::vector<std::size_t>& widths,
                       const Screen& screen) {
    std::string line;
    std::size_t used = 0;
    std::size_t blanks = 0;  // in front of the next field that shows something
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (used + blanks >= screen.width) break;
        const bool isLast = i + 1 == cells.size();
        const std::size_t room = screen.width - used - blanks;
        const std::string text =
            CutTo(Printable(cells[i].text), isLast ? room : std::min(room, widths[i]));
        const std::size_t width = WidthOf(text);
        const auto colour = kColours[static_cast<std::size_t>(cells[i].colour)];
        const bool coloured = screen.coloured && !colour.empty() && width > 0;
        if (width > 0) {
            line.append(blanks, ' ');
            used += blanks + width;
            blanks = 0;
        }
        if (coloured) line += colour;
        line += text;
        if (coloured) line += kPlain;
        blanks += widths[i] - std::min(widths[i], width) + kGap.size();
    }
    return line;
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string printable(text);
    std::ranges::replace_if(printable, text::IsControl, ' ');
    return text::EscapeUtf8Controls(printable);
}

std::string PipeLine(const std::vector<Cell>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i > 0) line += '\t';
        line += Printable(cells[i].text);
    }
    return line;
}

std::vector<std::string> ScreenLines(const std::vector<std::string>& head,
                                     const std::vector<Row>& rows, const Screen& screen) {
    std::vector<Row> all;
    if (!head.empty()) {
        Row& first = all.emplace_back();
        for (const std::string& text : head) first.cells.push_back({text, Colour::Grey});
    }
    all.insert(all.end(), rows.begin(), rows.end());
    const std::vector<std::size_t> widths = ColumnWidths(all, screen);
    std::vector<std::string> lines;
    for (const Row& row : all) {
        lines.push_back(ScreenLine(row.cells, widths, screen));
        if (row.below.empty()) continue;
        lines.push_back(CutTo(std::string(kIndent) + Printable(row.below), screen.width));
    }
    return lines;
}

}  // namespace kalvex::kalvexctl
