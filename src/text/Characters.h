// Classes of single characters.
#pragma once

namespace kalvex::text {

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

}  // namespace kalvex::text
