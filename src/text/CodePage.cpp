#include "text/CodePage.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "text/Utf8.h"

namespace kalvex::text {

namespace {

// The characters of the bytes from 0x80 up.
// clang-format off
constexpr char16_t kCharacters[128] = {
    0x20AC, 0x0081, 0x201A, 0x0083, 0x201E, 0x2026, 0x2020, 0x2021, 0x0088, 0x2030, 0x0160, 0x2039, 0x015A, 0x0164, 0x017D, 0x0179,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x0098, 0x2122, 0x0161, 0x203A, 0x015B, 0x0165, 0x017E, 0x017A,
    0x00A0, 0x02C7, 0x02D8, 0x0141, 0x00A4, 0x0104, 0x00A6, 0x00A7, 0x00A8, 0x00A9, 0x015E, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x017B,
    0x00B0, 0x00B1, 0x02DB, 0x0142, 0x00B4, 0x00B5, 0x00B6, 0x00B7, 0x00B8, 0x0105, 0x015F, 0x00BB, 0x013D, 0x02DD, 0x013E, 0x017C,
    0x0154, 0x00C1, 0x00C2, 0x0102, 0x00C4, 0x0139, 0x0106, 0x00C7, 0x010C, 0x00C9, 0x0118, 0x00CB, 0x011A, 0x00CD, 0x00CE, 0x010E,
    0x0110, 0x0143, 0x0147, 0x00D3, 0x00D4, 0x0150, 0x00D6, 0x00D7, 0x0158, 0x016E, 0x00DA, 0x0170, 0x00DC, 0x00DD, 0x0162, 0x00DF,
    0x0155, 0x00E1, 0x00E2, 0x0103, 0x00E4, 0x013A, 0x0107, 0x00E7, 0x010D, 0x00E9, 0x0119, 0x00EB, 0x011B, 0x00ED, 0x00EE, 0x010F,
    0x0111, 0x0144, 0x0148, 0x00F3, 0x00F4, 0x0151, 0x00F6, 0x00F7, 0x0159, 0x016F, 0x00FA, 0x0171, 0x00FC, 0x00FD, 0x0163, 0x02D9,
};

constexpr struct {
    unsigned char lower;
    unsigned char upper;
} kCasePairs[] = {
    {0x9A, 0x8A}, {0x9C, 0x8C}, {0x9D, 0x8D}, {0x9E, 0x8E}, {0x9F, 0x8F},
    {0xB3, 0xA3}, {0xB9, 0xA5}, {0xBA, 0xAA}, {0xBE, 0xBC}, {0xBF, 0xAF},
};
// clang-format on

constexpr std::size_t kCharacterLimit =
    *std::max_element(std::begin(kCharacters), std::end(kCharacters)) + 1;

struct Utf8Bytes {
    char bytes[3];
    std::uint8_t length;
};

constexpr Utf8Bytes Utf8Form(char16_t c) {
    const char last = static_cast<char>(0x80 | (c & 0x3F));
    if (c < 0x800) return {{static_cast<char>(0xC0 | c >> 6), last}, 2};
    return {{static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)), last},
            3};
}

// Of the bytes from 0x80 up.
constexpr std::array<Utf8Bytes, 128> kUtf8Forms = [] {
    std::array<Utf8Bytes, 128> forms{};
    for (int i = 0; i < 128; ++i) forms[i] = Utf8Form(kCharacters[i]);
    return forms;
}();

// By the character; 0 where there is no byte for it.
constexpr std::array<unsigned char, kCharacterLimit> kBytes = [] {
    std::array<unsigned char, kCharacterLimit> bytes{};
    for (int i = 0; i < 128; ++i) {
        bytes[i] = static_cast<unsigned char>(i);
        bytes[kCharacters[i]] = static_cast<unsigned char>(i + 128);
    }
    return bytes;
}();

struct CaseTables {
    std::array<unsigned char, 256> upper{};
    std::array<unsigned char, 256> lower{};

    constexpr void Add(int lowerCase, int upperCase) {
        upper[lowerCase] = static_cast<unsigned char>(upperCase);
        lower[upperCase] = static_cast<unsigned char>(lowerCase);
    }
};

constexpr CaseTables kCase = [] {
    CaseTables tables;
    for (int i = 0; i < 256; ++i) {
        tables.upper[i] = tables.lower[i] = static_cast<unsigned char>(i);
    }
    for (int c = 'a'; c <= 'z'; ++c) tables.Add(c, c - 'a' + 'A');
    for (const auto& pair : kCasePairs) tables.Add(pair.lower, pair.upper);
    for (int c = 0xE0; c <= 0xFE; ++c) {
        const bool sign = c == 0xF7;  // the division sign, over the multiplication sign
        if (!sign) tables.Add(c, c - 0x20);
    }
    return tables;
}();

char ByteOf(char32_t character) {
    if (character == 0) return 0;
    if (character >= kCharacterLimit || kBytes[character] == 0) return '?';
    return static_cast<char>(kBytes[character]);
}

// Moves what is ASCII at the beginning of the text to the end of the other.
void MoveAscii(std::string_view& text, std::string& out) {
    const auto end = std::find_if(text.begin(), text.end(), [](char c) { return c & 0x80; });
    const auto length = static_cast<std::size_t>(end - text.begin());
    out.append(text, 0, length);
    text.remove_prefix(length);
}

std::string Mapped(std::string_view text, const std::array<unsigned char, 256>& table) {
    std::string result(text);
    for (char& c : result) c = static_cast<char>(table[static_cast<unsigned char>(c)]);
    return result;
}

}  // namespace

std::string ToUtf8(std::string_view windows1250) {
    std::string result;
    result.reserve(windows1250.size() + windows1250.size() / 4);
    while (!windows1250.empty()) {
        MoveAscii(windows1250, result);
        if (windows1250.empty()) break;
        const Utf8Bytes& form = kUtf8Forms[static_cast<unsigned char>(windows1250.front()) - 0x80];
        result.append(form.bytes, form.length);
        windows1250.remove_prefix(1);
    }
    return result;
}

std::string FromUtf8(std::string_view utf8) {
    std::string result;
    result.reserve(utf8.size());
    while (!utf8.empty()) {
        MoveAscii(utf8, result);
        if (!utf8.empty()) result.push_back(ByteOf(TakeCharacter(utf8)));
    }
    return result;
}

std::string FromWide(std::wstring_view wide) {
    std::string result;
    result.reserve(wide.size());
    for (const wchar_t c : wide) result.push_back(ByteOf(static_cast<char32_t>(c)));
    return result;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        if (TakeCharacter(text) == kNoCharacter) return false;
    }
    return true;
}

unsigned char ToUpper(unsigned char c) {
    return kCase.upper[c];
}

unsigned char ToLower(unsigned char c) {
    return kCase.lower[c];
}

std::string ToUpper(std::string_view text) {
    return Mapped(text, kCase.upper);
}

std::string ToLower(std::string_view text) {
    return Mapped(text, kCase.lower);
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return kCase.lower[static_cast<unsigned char>(c)]; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [lower](char left, char right) { return lower(left) == lower(right); });
}

}  // namespace kalvex::text
