#include "platform/Translator.h"

#include "text/CodePage.h"
#include "text/TextFormat.h"

namespace kalvex {

std::string Translator::Translate(const char* polish) const {
    return FromUtf8(polish);
}

std::string InWords(const Notice& notice, const Translator& translator) {
    return FormatText(ToUtf8(translator.Translate(notice.polish)), notice.values);
}

}  // namespace kalvex
