#include "text/LineScanner.h"

#include <array>

namespace kalvex::text {

namespace {

constexpr unsigned char kLetterOrDigit = 1;
constexpr unsigned char kWord = 2;

constexpr std::array<unsigned char, 256> MakeClasses() {
    std::array<unsigned char, 256> classes{};
    for (int c = '0'; c <= '9'; ++c) classes[c] = kLetterOrDigit | kWord;
    for (int c = 'A'; c <= 'Z'; ++c) classes[c] = kLetterOrDigit | kWord;
    for (int c = 'a'; c <= 'z'; ++c) classes[c] = kLetterOrDigit | kWord;
    // Ą ą Ć ć Ę ę Ł ł Ń ń Ó ó Ś ś Ź ź Ż ż
    for (int c : {0xA5, 0xB9, 0xC6, 0xE6, 0xCA, 0xEA, 0xA3, 0xB3, 0xD1, 0xF1, 0xD3, 0xF3, 0x8C,
                  0x9C, 0x8F, 0x9F, 0xAF, 0xBF}) {
        classes[c] = kLetterOrDigit | kWord;
    }
    for (char c : {'-', '.', ':', '\\', '_', '@', '*', '?'}) {
        classes[static_cast<unsigned char>(c)] = kWord;
    }
    return classes;
}

constexpr std::array<unsigned char, 256> kClasses = MakeClasses();

bool IsOneOf(char c, std::string_view set) {
    return set.find(c) != std::string_view::npos;
}

std::size_t TokenLength(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && IsWordCharacter(text[length])) ++length;
    if (length > 0) return length;
    if (text[0] == '"') {
        const std::size_t quote = text.find('"', 1);
        return quote == std::string_view::npos ? 1 : quote + 1;
    }
    const bool pair = text.size() > 1 && IsOneOf(text[0], "<>=!&|") && IsOneOf(text[1], "=&|");
    return pair ? 2 : 1;
}

}  // namespace

std::string_view NextToken(std::string_view& text) {
    const std::size_t start = text.find_first_not_of(' ');
    if (start == std::string_view::npos) {
        text = {};
        return {};
    }
    text.remove_prefix(start);
    const std::string_view token = text.substr(0, TokenLength(text));
    text.remove_prefix(token.size());
    return token;
}

std::string_view TrimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool IsWordCharacter(char c) {
    return (kClasses[static_cast<unsigned char>(c)] & kWord) != 0;
}

bool IsLetterOrDigit(char c) {
    return (kClasses[static_cast<unsigned char>(c)] & kLetterOrDigit) != 0;
}

}  // namespace kalvex::text
