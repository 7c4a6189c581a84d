#include "text/Encoding.h"

#include <algorithm>
#include <cstddef>

#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "text/Utf8.h"

namespace kalvex::text {

namespace {

constexpr char32_t kFirstPrintable = 0xA0;  // above ASCII; what is below are controls

bool IsAscii(char c) {
    return (c & 0x80) == 0;
}

// Off the text, with its end.
std::string_view TakeLine(std::string_view& text) {
    const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view line = text.substr(0, length);
    text.remove_prefix(length);
    return line;
}

// Well-formed, and not by chance.
bool ReadsAsUtf8(std::string_view text) {
    bool telling = false;
    while (!text.empty()) {
        const std::string_view rest = text;
        if (TakeCharacter(text) == kNoCharacter) return false;
        const std::string_view bytes = rest.substr(0, rest.size() - text.size());
        telling = telling || (bytes.size() > 1 && !std::ranges::all_of(bytes, IsLetterOrDigit));
    }
    return telling;
}

template <class Test>
std::optional<int> FindLine(std::string_view text, const Test& test) {
    for (int line = 1; !text.empty(); ++line) {
        if (test(TakeLine(text))) return line;
    }
    return std::nullopt;
}

class Converter {
  public:
    Converter(std::string_view text, const Conversion& conversion)
        : m_rest(text), m_conversion(conversion), m_from(conversion.from) {
        const bool marked = text.starts_with(kUtf8Mark);
        if (marked) m_rest.remove_prefix(kUtf8Mark.size());
        if (!m_from && IsUtf8(m_rest) && (marked || ReadsAsUtf8(m_rest))) m_from = Encoding::Utf8;
    }

    Converted Run() {
        if (m_conversion.mark) m_result.text = kUtf8Mark;
        for (m_line = 1; !m_rest.empty(); ++m_line) {
            std::string_view line = TakeLine(m_rest);
            const std::string_view end = TakeEnd(line);
            const Encoding from =
                m_from.value_or(ReadsAsUtf8(line) ? Encoding::Utf8 : Encoding::Windows1250);
            ConvertLine(line, from);
            m_result.text += end;
        }
        return std::move(m_result);
    }

  private:
    bool IsFull() const { return m_result.faults.size() == kMostEncodingFaults; }

    // Off the line, as it is to be.
    std::string_view TakeEnd(std::string_view& line) const {
        if (m_conversion.lineEnds == LineEnds::Keep || !line.ends_with('\n')) return {};
        line.remove_suffix(line.ends_with("\r\n") ? 2 : 1);
        return m_conversion.lineEnds == LineEnds::CrLf ? "\r\n" : "\n";
    }

    void ConvertLine(std::string_view line, Encoding from) {
        for (m_column = 1; !line.empty() && !IsFull(); ++m_column) {
            const std::string_view rest = line;
            const char32_t character =
                from == Encoding::Utf8 ? TakeCharacter(line) : TakeByte(line);
            const std::string_view bytes = rest.substr(0, rest.size() - line.size());
            if (character == kNoCharacter) {
                Fault(EncodingFaultKind::NotUtf8, ByteValue(bytes), bytes);
            } else if (from == m_conversion.to || IsAscii(bytes.front())) {
                m_result.text += bytes;
            } else if (from == Encoding::Utf8) {
                AddByte(bytes, character);
            } else {
                AddCharacter(bytes);
            }
        }
    }

    static char32_t ByteValue(std::string_view bytes) {
        return static_cast<unsigned char>(bytes.front());
    }

    static char32_t TakeByte(std::string_view& line) {
        const char32_t byte = ByteValue(line);
        line.remove_prefix(1);
        return byte;
    }

    void AddByte(std::string_view utf8, char32_t character) {
        const std::string byte = FromUtf8(utf8);
        if (character < kFirstPrintable || byte == "?") {
            Fault(EncodingFaultKind::NoCounterpart, character, utf8);
        } else {
            m_result.text += byte;
        }
    }

    void AddCharacter(std::string_view byte) {
        const std::string utf8 = ToUtf8(byte);
        std::string_view rest = utf8;
        if (TakeCharacter(rest) < kFirstPrintable) {
            Fault(EncodingFaultKind::NotWindows1250, ByteValue(byte), byte);
        } else {
            m_result.text += utf8;
        }
    }

    void Fault(EncodingFaultKind kind, char32_t value, std::string_view bytes) {
        m_result.faults.push_back({kind, m_line, m_column, value, std::string(bytes)});
    }

    std::string_view m_rest;
    const Conversion& m_conversion;
    std::optional<Encoding> m_from;  // of the whole text
    int m_line = 0;
    int m_column = 0;
    Converted m_result;
};

}  // namespace

std::optional<int> FindUtf8Line(std::string_view text) {
    if (text.starts_with(kUtf8Mark)) return 1;
    if (std::ranges::all_of(text, IsAscii)) return std::nullopt;
    return FindLine(text, ReadsAsUtf8);
}

std::optional<int> FindOtherLine(std::string_view text) {
    return FindLine(text, [](std::string_view line) { return !IsUtf8(line); });
}

Converted Convert(std::string_view text, const Conversion& conversion) {
    if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos) {
        const std::string_view before = text.substr(0, zero);
        const auto line = std::ranges::count(before, '\n') + 1;
        const std::size_t column = zero - (before.rfind('\n') + 1) + 1;
        return {{},
                {{EncodingFaultKind::NotText, static_cast<int>(line), static_cast<int>(column), 0,
                  std::string(1, '\0')}}};
    }
    return Converter(text, conversion).Run();
}

}  // namespace kalvex::text
