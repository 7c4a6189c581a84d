// The values of a script's variables as they stand, beside the lines that name them. Reading them
// changes nothing that a script could tell. Main thread; engine texts, lines count from 0.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/ScriptDocument.h"

namespace kalvex::workbench {

inline constexpr std::size_t kValuesBesideLength = 120;  // in characters, at most

// The names in a line that could be those of variables, with their suffixes, each once and in
// order: the words up to a comment, without texts and the keyword in front.
std::vector<std::string> NamesInLine(std::string_view line);

// "  licznik = 12.50   lista = 3 el."; empty where the line names no variable of the document.
std::string ValuesBeside(const engine::CKalvexDoc& document, int line);

// The same for whoever asks about the same lines again and again, such as an editor while a script
// runs: a line is taken apart when its text is another one. One for each document.
class LineValues {
  public:
    std::string Beside(const engine::CKalvexDoc& document, int line);

  private:
    struct Entry {
        std::string text;
        std::vector<std::string> names;
    };

    std::unordered_map<int, Entry> m_lines;
};

}  // namespace kalvex::workbench
