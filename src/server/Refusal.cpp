#include "server/Refusal.h"

#include <cstddef>

#include "platform/Translator.h"

namespace kalvex::server {

namespace {

struct Row {
    std::uint16_t result;
    const char* text;
};

#define KALVEX_ROW(name, result, text) {result, platform::Translatable(text)},
constexpr Row kRows[] = {KALVEX_REFUSALS(KALVEX_ROW)};
#undef KALVEX_ROW

}  // namespace

std::uint16_t ResultOf(Refusal refusal) {
    return kRows[static_cast<std::size_t>(refusal)].result;
}

const char* TextOf(Refusal refusal) {
    return kRows[static_cast<std::size_t>(refusal)].text;
}

}  // namespace kalvex::server
