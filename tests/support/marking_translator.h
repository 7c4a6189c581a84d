// Shows which texts have passed through the translator: it puts them into angle brackets.
#pragma once

#include <string>

#include "platform/Translator.h"

namespace kalvex::support {

class MarkingTranslator final : public platform::Translator {
  public:
    explicit MarkingTranslator(bool marks = true) : marks(marks) {}

    std::string Translate(const char* polish) const override {
        const std::string text = platform::Translator::Translate(polish);
        return marks ? "<" + text + ">" : text;
    }

    bool marks;
};

}  // namespace kalvex::support
