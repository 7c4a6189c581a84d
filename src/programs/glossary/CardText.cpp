#include "programs/glossary/CardText.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace kalvex::glossary {

namespace {

// What no table tells.
constexpr std::string_view kHead =
    "# The card\n"
    "\n"
    "Every word of [the language](language.md), as its tables have it. Made by\n"
    "`LANGUAGE=en build/release/bin/language-card > docs/card.md`; the build makes a page to print "
    "of\n"
    "it, `build/release/docs/card.pdf`. A script of `examples/` shows most of it at work.\n";

// Forms by the alphabet, all else in the order of the tables.
std::vector<std::string> LinesOf(const Section& section) {
    std::vector<std::string> lines;
    const bool wantsForms = section.layout == Layout::Forms;
    for (const Entry& entry : section.entries) {
        if (wantsForms) {
            lines.insert(lines.end(), entry.forms.begin(), entry.forms.end());
        } else {
            lines.push_back(entry.label);
        }
    }
    if (wantsForms) std::ranges::sort(lines);
    return lines;
}

constexpr std::size_t kWidth = 96;

// Short words go on one line as far as they fit.
std::string Joined(const std::vector<std::string>& lines, std::string_view glue) {
    std::string joined;
    std::size_t width = 0;
    for (const std::string& line : lines) {
        const bool isFirst = joined.empty();
        const bool isNext = !isFirst && width + glue.size() + line.size() <= kWidth;
        const std::string_view before = isFirst ? "" : isNext && glue != "\n" ? glue : "\n";
        joined.append(before).append(line);
        width = before == glue ? width + glue.size() + line.size() : line.size();
    }
    return joined;
}

}  // namespace

std::string CardText(std::span<const Section> glossary) {
    std::string card(kHead);
    for (const Section& section : glossary) {
        const std::string_view glue = section.layout == Layout::Words ? "  " : "\n";
        card.append("\n## ").append(section.heading).append("\n\n```\n");
        card.append(Joined(LinesOf(section), glue)).append("\n```\n");
    }
    return card;
}

}  // namespace kalvex::glossary
