#include "text/Utf8.h"

#include <cstddef>

namespace kalvex::text {

char32_t TakeCharacter(std::string_view& text) {
    const auto byteAt = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byteAt(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    constexpr unsigned char kLeadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    char32_t character = lead & kLeadBits[length];
    bool valid = length > 0 && length <= text.size();
    for (std::size_t i = 1; valid && i < length; ++i) {
        valid = (byteAt(i) & 0xC0) == 0x80;
        character = character << 6 | (byteAt(i) & 0x3F);
    }
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    valid = valid && character >= kLeast[length] && character <= 0x10FFFF && !surrogate;
    text.remove_prefix(valid ? length : 1);
    return valid ? character : kNoCharacter;
}

}  // namespace kalvex::text
