#include "text/ControlText.h"

#include "text/Characters.h"

namespace kalvex::text {

namespace {

// Those of Windows-1250 that become C1 controls in UTF-8.
constexpr std::string_view kUndefined = "\x81\x83\x88\x90\x98";
constexpr char kC1Lead = '\xC2';

bool IsC1(std::string_view utf8) {
    return utf8.size() > 1 && utf8[0] == kC1Lead && (utf8[1] & 0xE0) == 0x80;
}

void AddEscaped(char c, std::string_view number, std::string& out) {
    constexpr std::string_view kNamed = "\n\r\t";
    constexpr std::string_view kDigits = "0123456789abcdef";
    const std::size_t named = kNamed.find(c);
    if (named != kNamed.npos) {
        out += {'\\', "nrt"[named]};
        return;
    }
    const auto code = static_cast<unsigned char>(c);
    out.append(number).append({kDigits[code >> 4], kDigits[code & 0xF]});
}

}  // namespace

std::string EscapeControls(std::string_view windows1250) {
    std::string escaped;
    escaped.reserve(windows1250.size());
    for (const char c : windows1250) {
        if (IsControl(c) || kUndefined.find(c) != kUndefined.npos) {
            AddEscaped(c, kControlNumber, escaped);
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string EscapeUtf8Controls(std::string_view utf8, char kept, std::string_view number) {
    std::string escaped;
    escaped.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        if (IsC1(utf8.substr(i))) {
            AddEscaped(utf8[++i], number, escaped);
        } else if (IsControl(utf8[i]) && utf8[i] != kept) {
            AddEscaped(utf8[i], number, escaped);
        } else {
            escaped += utf8[i];
        }
    }
    return escaped;
}

}  // namespace kalvex::text
