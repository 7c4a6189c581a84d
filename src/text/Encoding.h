// The encodings of files: Windows-1250, which scripts, profiles and data files are in, and UTF-8,
// which editors like to write. Tells them apart and turns one into the other without losing
// anything. Any thread.
//
// A text is UTF-8 when all of it is well formed and some of it could not well be Windows-1250: a
// mark at the beginning, or a character whose bytes are not all Polish letters there.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kalvex::text {

// The first line, from 1, that is UTF-8 by itself; nothing where there is none.
std::optional<int> FindUtf8Line(std::string_view text);

// The first line, from 1, that is not well-formed UTF-8; nothing where there is none.
std::optional<int> FindOtherLine(std::string_view text);

enum class Encoding { Windows1250, Utf8 };

enum class LineEnds { Keep, CrLf, Lf };

struct Conversion {
    // None: found out; where lines differ, for each of them.
    std::optional<Encoding> from = {};
    Encoding to = Encoding::Windows1250;
    LineEnds lineEnds = LineEnds::Keep;
    bool mark = false;  // UTF-8 begins with its mark; without that a mark goes
};

enum class EncodingFaultKind {
    NoCounterpart,   // a character that Windows-1250 does not have
    NotUtf8,         // a byte
    NotWindows1250,  // a byte
    NotText,         // a byte of value 0, as in UTF-16 and in what is no text at all
};

struct EncodingFault {
    EncodingFaultKind kind;
    int line;           // from 1
    int column;         // from 1, in characters
    char32_t value;     // of the character or the byte
    std::string bytes;  // what the text has there
};

inline constexpr std::size_t kMostEncodingFaults = 100;

struct Converted {
    std::string text = {};                   // of no use when there are faults
    std::vector<EncodingFault> faults = {};  // the first ones, at most kMostEncodingFaults
};

Converted Convert(std::string_view text, const Conversion& conversion);

}  // namespace kalvex::text
