#include "vantrel/Codes.h"

#include "text/TextFormat.h"

namespace kalvex::vantrel {

namespace {

struct ReasonRow {
    std::uint32_t code;
    const char* text;
};

#define KALVEX_ROW(code, name, text) {code, text},
constexpr ReasonRow kReasons[] = {KALVEX_CONNECTION_REASONS(KALVEX_ROW)};
#undef KALVEX_ROW

}  // namespace

std::string ConnectionReasonText(std::uint32_t code, const platform::Translator& translator) {
    for (const ReasonRow& row : kReasons) {
        if (row.code == code) return translator.Translate(row.text);
    }
    return text::FormatText(translator.Translate("kod %d"), {std::to_string(code)});
}

}  // namespace kalvex::vantrel
