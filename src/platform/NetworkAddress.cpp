#include "platform/NetworkAddress.h"

#include "platform/AddressRange.h"
#include "text/WholeNumber.h"

namespace kalvex::platform {

bool ReadAddress(std::string_view text, std::string& host, std::uint16_t& port) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) return false;
    std::string_view name = text.substr(0, colon);
    if (name.size() > 2 && name.front() == '[' && name.back() == ']') {
        name = name.substr(1, name.size() - 2);
    } else if (name.find_first_of(":[]") != std::string_view::npos) {
        return false;
    }
    const auto number = text::ReadWholeNumber<std::uint16_t>(text.substr(colon + 1));
    host = name;
    port = number.value_or(0);
    return !host.empty() && number;
}

bool IsLoopback(std::string_view host) {
    return host == "localhost" || IsInRange(host, "127.0.0.0/8") || IsInRange(host, "::1");
}

}  // namespace kalvex::platform
