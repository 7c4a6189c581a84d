#include "platform/Translator.h"

#include "text/CodePage.h"
#include "text/TextFormat.h"

namespace kalvex::platform {

std::string Translator::Translate(const char* polish) const {
    return text::FromUtf8(polish);
}

std::string InWords(const Notice& notice, const Translator& translator) {
    return text::FormatText(text::ToUtf8(translator.Translate(notice.polish)), notice.values);
}

}  // namespace kalvex::platform
