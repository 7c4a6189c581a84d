#include "vantrel/Codes.h"

#include "text/CodePage.h"

namespace kalvex {

namespace {

struct ReasonRow {
    std::uint32_t code;
    const char* text;
};

#define KALVEX_ROW(code, name, text) {code, text},
constexpr ReasonRow kReasons[] = {KALVEX_CONNECTION_REASONS(KALVEX_ROW)};
#undef KALVEX_ROW

}  // namespace

std::string ConnectionReasonText(std::uint32_t code) {
    for (const ReasonRow& row : kReasons) {
        if (row.code == code) return FromUtf8(row.text);
    }
    return "kod " + std::to_string(code);
}

}  // namespace kalvex
