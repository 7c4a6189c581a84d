// The list of scripts that start by themselves, while a person edits it. Main thread; paths are
// engine texts, rows count from 0. Each operation is told which rows are selected and answers which
// ones are afterwards.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "workbench/model/FindRequest.h"

namespace kalvex::workbench {

using SelectedRows = std::vector<std::size_t>;  // ascending, each once, all of them in the list

// The caption of the button that adds, Polish, for the translator.
const char* CaptionOfAdding(const SelectedRows& selected);

class AutostartList {
  public:
    explicit AutostartList(std::vector<std::string> paths = {}) : m_paths(std::move(paths)) {}

    const std::vector<std::string>& Paths() const { return m_paths; }
    // What the first column shows: rows are numbered anew whatever happens to the list.
    static std::string IdOf(std::size_t row) { return std::to_string(row + 1); }

    // In the place of the first selected row, which moves down, or at the end with none.
    SelectedRows Add(const std::vector<std::string>& paths, const SelectedRows& selected);
    SelectedRows Remove(const SelectedRows& selected);

    // By one place; rows that stand together move together, and those at the edge stay.
    SelectedRows MoveUp(const SelectedRows& selected);
    SelectedRows MoveDown(const SelectedRows& selected);

    // Rows are numbered from 1 for people.
    bool IsRowNumber(int number) const;
    // All selected rows, in their order, so that the first has that number, or as near to it as the
    // others leave place behind it.
    SelectedRows MoveTo(int number, const SelectedRows& selected);

    struct Found {
        std::optional<std::size_t> row;
        int beeps = 0;  // one for each end of the list that was met
    };
    // From the row behind the selected ones, then once more from the top.
    Found Find(const FindRequest& request, const SelectedRows& selected) const;

  private:
    std::vector<std::string> m_paths;
};

}  // namespace kalvex::workbench
