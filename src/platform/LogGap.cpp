#include "platform/LogGap.h"

#include "text/TextFormat.h"

namespace kalvex::platform {

std::string GapText(std::uint64_t lost, const Translator& translator) {
    return text::FormatText(translator.Translate("Pominięte wiersze rejestru: %s"),
                            {std::to_string(lost)});
}

}  // namespace kalvex::platform
