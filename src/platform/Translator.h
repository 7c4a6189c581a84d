// Texts for people: the Polish text is the key.
#pragma once

#include <string>
#include <vector>

namespace kalvex::platform {

class Translator {
  public:
    virtual ~Translator() = default;
    // `polish` is UTF-8; the answer is an engine text (Windows-1250).
    virtual std::string Translate(const char* polish) const;  // without a catalogue: the key itself
};

// A text for people that is translated where it is told, such as what is wrong with a file.
struct Notice {
    const char* polish = nullptr;  // UTF-8, with places as FormatText has them; null: nothing
    std::vector<std::string> values = {};  // UTF-8

    explicit operator bool() const { return polish != nullptr; }
};

std::string InWords(const Notice& notice, const Translator& translator);  // UTF-8

// Marks a text of a table, which is translated where it is shown.
constexpr const char* Translatable(const char* polish) {
    return polish;
}

}  // namespace kalvex::platform
