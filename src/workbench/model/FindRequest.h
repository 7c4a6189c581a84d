// What a person looks for in a column of a table.
#pragma once

#include <string>

namespace kalvex::workbench {

struct FindRequest {
    std::string pattern;  // an engine text
    int options = 0;      // of text::PatternOption
};

}  // namespace kalvex::workbench
