#include "platform/Translator.h"

#include "text/CodePage.h"

namespace kalvex {

std::string Translator::Translate(const char* polish) const {
    return FromUtf8(polish);
}

}  // namespace kalvex
