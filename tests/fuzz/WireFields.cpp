#include "fuzz/WireFields.h"

namespace kalvex::fuzz {

namespace {

constexpr std::size_t kLongestNumber = 10;

// The length of the number at the beginning of the bytes, 0 when there is none.
std::size_t ReadNumber(std::string_view bytes, std::uint64_t& number) {
    number = 0;
    for (std::size_t index = 0; index < bytes.size() && index < kLongestNumber; ++index) {
        const auto byte = static_cast<unsigned char>(bytes[index]);
        number |= std::uint64_t{byte & 0x7fU} << (7 * index);
        if ((byte & 0x80) == 0) return index + 1;
    }
    return 0;
}

// How many bytes the content of a field takes that is not a text, 0 for none that is known.
std::size_t LengthOf(std::uint64_t tag, std::string_view bytes) {
    std::uint64_t number = 0;
    switch (tag & 7) {
        case 0:
            return ReadNumber(bytes, number);
        case 1:
            return 8;
        case 5:
            return 4;
        default:
            return 0;
    }
}

}  // namespace

std::string WireNumber(std::uint64_t number) {
    std::string bytes;
    for (; number > 0x7f; number >>= 7) bytes += static_cast<char>(0x80 | (number & 0x7f));
    return bytes += static_cast<char>(number);
}

bool SplitFields(std::string_view bytes, std::vector<WireField>& fields) {
    fields.clear();
    while (!bytes.empty()) {
        WireField field;
        const std::size_t tag = ReadNumber(bytes, field.tag);
        if (tag == 0) return false;
        bytes.remove_prefix(tag);
        std::uint64_t length = LengthOf(field.tag, bytes);
        if (field.IsText()) {
            const std::size_t number = ReadNumber(bytes, length);
            if (number == 0) return false;
            bytes.remove_prefix(number);
        } else if (length == 0) {
            return false;
        }
        if (length > bytes.size()) return false;
        field.content = bytes.substr(0, length);
        bytes.remove_prefix(length);
        fields.push_back(std::move(field));
    }
    return true;
}

std::string JoinFields(const std::vector<WireField>& fields) {
    std::string bytes;
    for (const WireField& field : fields) {
        bytes += WireNumber(field.tag);
        if (field.IsText()) bytes += WireNumber(field.content.size());
        bytes += field.content;
    }
    return bytes;
}

}  // namespace kalvex::fuzz
