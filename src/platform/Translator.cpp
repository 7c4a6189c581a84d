#include "platform/Translator.h"

#include "platform/CodePage.h"

namespace kalvex {

std::string Translator::Translate(const char* polish) const {
    return FromUtf8(polish);
}

}  // namespace kalvex
