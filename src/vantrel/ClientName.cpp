#include "vantrel/ClientName.h"

#include "text/ControlText.h"

namespace kalvex::vantrel {

std::string Printable(std::string_view name) {
    constexpr std::size_t kLongestName = 255;
    return text::EscapeControls(name.substr(0, kLongestName));
}

}  // namespace kalvex::vantrel
