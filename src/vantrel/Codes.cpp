#include "vantrel/Codes.h"

#include "platform/CodePage.h"

namespace kalvex {

namespace {

struct CodeRow {
    std::uint32_t code;
    const char* text;
};

#define KALVEX_ROW(code, name, text) {code, text},
constexpr CodeRow kReasons[] = {KALVEX_CONNECTION_REASONS(KALVEX_ROW)};
constexpr CodeRow kResults[] = {KALVEX_REQUEST_RESULTS(KALVEX_ROW)};
#undef KALVEX_ROW

template <std::size_t Size>
std::string FindText(const CodeRow (&rows)[Size], std::uint32_t code) {
    for (const CodeRow& row : rows) {
        if (row.code == code) return FromUtf8(row.text);
    }
    return "kod " + std::to_string(code);
}

}  // namespace

std::string ConnectionReasonText(std::uint32_t code) {
    return FindText(kReasons, code);
}

std::string RequestResultText(std::uint32_t code) {
    return FindText(kResults, code);
}

}  // namespace kalvex
