#include "vantrel/Codes.h"

#include <span>

#include "text/TextFormat.h"

namespace kalvex::vantrel {

namespace {

struct CodeRow {
    std::uint32_t code;
    const char* text;
};

#define KALVEX_ROW(code, name, text) {code, text},
constexpr CodeRow kReasons[] = {KALVEX_CONNECTION_REASONS(KALVEX_ROW)};
constexpr CodeRow kResults[] = {KALVEX_REQUEST_RESULTS(KALVEX_ROW)};
#undef KALVEX_ROW

std::string WordsOf(std::span<const CodeRow> rows, std::uint32_t code,
                    const platform::Translator& translator) {
    for (const CodeRow& row : rows) {
        if (row.code == code) return translator.Translate(row.text);
    }
    return text::FormatText(translator.Translate("kod %d"), {std::to_string(code)});
}

}  // namespace

std::string ConnectionReasonText(std::uint32_t code, const platform::Translator& translator) {
    return WordsOf(kReasons, code, translator);
}

std::string RequestResultText(std::uint16_t code, const platform::Translator& translator) {
    return WordsOf(kResults, code, translator);
}

}  // namespace kalvex::vantrel
