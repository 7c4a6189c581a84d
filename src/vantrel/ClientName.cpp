#include "vantrel/ClientName.h"

#include <algorithm>

#include "text/Characters.h"

namespace kalvex::vantrel {

std::string Printable(std::string_view name) {
    constexpr std::size_t kLongestName = 255;
    std::string text(name.substr(0, kLongestName));
    std::replace_if(text.begin(), text.end(), text::IsControl, '?');
    return text;
}

}  // namespace kalvex::vantrel
