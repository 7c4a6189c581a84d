#include "platform/AddressRange.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "text/WholeNumber.h"

namespace kalvex::platform {

namespace {

struct Address {
    std::array<unsigned char, 16> bytes{};
    int bits = 0;  // 32 or 128
};

struct Range {
    Address address;
    int prefix = 0;
};

std::optional<Address> ParseAddress(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return std::nullopt;
    const std::string terminated(text);
    Address address;
    if (inet_pton(AF_INET, terminated.c_str(), address.bytes.data()) == 1) {
        address.bits = 32;
        return address;
    }
    if (inet_pton(AF_INET6, terminated.c_str(), address.bytes.data()) != 1) return std::nullopt;
    address.bits = 128;
    constexpr std::array<unsigned char, 12> kMapped{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    if (std::equal(kMapped.begin(), kMapped.end(), address.bytes.begin())) {
        std::copy(address.bytes.begin() + 12, address.bytes.end(), address.bytes.begin());
        address.bits = 32;
    }
    return address;
}

std::optional<Range> ParseRange(std::string_view text) {
    const std::size_t slash = text.find('/');
    const std::optional<Address> address = ParseAddress(text.substr(0, slash));
    if (!address) return std::nullopt;
    if (slash == std::string_view::npos) return Range{*address, address->bits};
    const std::string_view digits = text.substr(slash + 1);
    const auto prefix = text::ReadWholeNumber<int>(digits);
    if (!prefix || *prefix < 0 || *prefix > address->bits) return std::nullopt;
    return Range{*address, *prefix};
}

}  // namespace

bool IsAddressRange(std::string_view text) {
    return ParseRange(text).has_value();
}

bool IsInRange(std::string_view address, std::string_view range) {
    const std::optional<Address> one = ParseAddress(address);
    const std::optional<Range> all = ParseRange(range);
    if (!one || !all || one->bits != all->address.bits) return false;
    for (int bit = 0; bit < all->prefix; ++bit) {
        const auto byte = static_cast<std::size_t>(bit / 8);
        const int mask = 0x80 >> (bit % 8);
        if (((one->bytes[byte] ^ all->address.bytes[byte]) & mask) != 0) return false;
    }
    return true;
}

}  // namespace kalvex::platform
