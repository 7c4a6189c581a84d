#include "vantrel/OrderWords.h"

#include <array>

#include "text/TextFormat.h"
#include "vantrel/Codes.h"

namespace kalvex::vantrel {

namespace {

constexpr const char* kWrite = platform::Translatable("zapis %s");

// By PeriodAction.
constexpr std::array<const char*, 5> kActions = {
    platform::Translatable("rozpoczęcie %s"),      platform::Translatable("pobranie %s"),
    platform::Translatable("obliczenie %s"),       platform::Translatable("uzupełnienie %s"),
    platform::Translatable("ponowne pobranie %s"),
};

struct ResultRow {
    std::uint16_t result;
    const char* text;
};

constexpr ResultRow kResults[] = {
    {ResultNothing, platform::Translatable("brak zmiennej albo danych")},
    {ResultNoAccess, platform::Translatable("brak dostępu")},
    {ResultBadValue, platform::Translatable("niepoprawna wartość")},
    {ResultBadRequest, platform::Translatable("polecenie niemożliwe do wykonania")},
    {ResultServerFault, platform::Translatable("błąd serwera")},
};

std::string OfKind(const char* polish, value::ValueKind kind,
                   const platform::Translator& translator) {
    const std::string_view word = value::WordOfKind(kind);
    return text::FormatText(translator.Translate(polish), {word.empty() ? "?" : word});
}

}  // namespace

std::string WriteWords(value::ValueKind kind, const platform::Translator& translator) {
    return OfKind(kWrite, kind, translator);
}

std::string PeriodWords(PeriodAction action, value::ValueKind kind,
                        const platform::Translator& translator) {
    return OfKind(kActions[static_cast<std::size_t>(action)], kind, translator);
}

std::string ResultWords(std::uint16_t result, const platform::Translator& translator) {
    for (const ResultRow& row : kResults) {
        if (row.result == result) return translator.Translate(row.text);
    }
    return text::FormatText(translator.Translate("kod %d"), {std::to_string(result)});
}

}  // namespace kalvex::vantrel
