#include "text/PatternMatch.h"

#include "text/CodePage.h"

namespace kalvex::text {

namespace {

// One character of the pattern against one of the text.
bool Matches(char pattern, char text, int options) {
    if (pattern == text) return true;
    if (pattern == '?' && (options & PatternOption::Wildcards) != 0) return true;
    return (options & PatternOption::NoCase) != 0 && ToUpper(static_cast<unsigned char>(pattern)) ==
                                                         ToUpper(static_cast<unsigned char>(text));
}

}  // namespace

// Behind a star the rest of the pattern is tried at one place of the text after the other. Only the
// latest star is ever gone back to: what stands before it has matched at the first place possible,
// and no later place could do more.
bool CompareWithPattern(std::string_view text, std::string_view pattern, int options) {
    const bool wildcards = (options & PatternOption::Wildcards) != 0;
    const bool whole = (options & PatternOption::Whole) != 0;
    const bool anywhere = !whole && (options & PatternOption::Anywhere) != 0;
    constexpr std::size_t kNone = std::string_view::npos;
    std::size_t behindStar = anywhere ? 0 : kNone;
    std::size_t tried = 0;
    std::size_t at = 0;
    std::size_t next = 0;
    for (;;) {
        if (next == pattern.size()) {
            if (!whole || at == text.size() || behindStar == next) return true;
        } else if (wildcards && pattern[next] == '*') {
            behindStar = ++next;
            tried = at;
            continue;
        } else if (at == text.size()) {
            return false;
        } else if (Matches(pattern[next], text[at], options)) {
            ++next;
            ++at;
            continue;
        }
        if (behindStar == kNone) return false;
        next = behindStar;
        at = ++tried;
    }
}

}  // namespace kalvex::text
