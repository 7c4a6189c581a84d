// The directives that the preparation of a script replaces by other lines before it runs, for
// completion, help and the manual.
#pragma once

#include <span>
#include <string_view>

namespace kalvex::language {

struct DirectiveRow {
    std::string_view keyword;  // upper case
    std::string_view usage;    // the form as the help shows it, UTF-8
    std::string_view help;     // Polish, UTF-8
};

std::span<const DirectiveRow> Directives();

}  // namespace kalvex::language
