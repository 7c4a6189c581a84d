// Texts for people: the Polish text is the key.
#pragma once

#include <string>

namespace kalvex {

class Translator {
  public:
    virtual ~Translator() = default;
    // `polish` is UTF-8; the answer is an engine text (Windows-1250).
    virtual std::string Translate(const char* polish) const;  // without a catalogue: the key itself
};

// Marks a text of a table, which is translated where it is shown.
constexpr const char* Translatable(const char* polish) {
    return polish;
}

}  // namespace kalvex
