// From a line of the log to the script that it is about. Engine texts.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::workbench {

struct LogReference {
    std::string path;         // as the line has it; empty: the line is about no script
    std::optional<int> line;  // from 0; none: the script's window alone is to be shown
};

// The line is that of the log with its stamp; `lineMark` is engine::kLineMark in the log's
// language. Of several selected rows, or none, nothing is found.
LogReference FindScript(std::string_view lineText, std::size_t selectedRows,
                        std::string_view lineMark);

}  // namespace kalvex::workbench
