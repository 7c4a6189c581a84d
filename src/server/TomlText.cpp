#define TOML_IMPLEMENTATION
#include "server/TomlText.h"

#include <stdexcept>
#include <string>

#include "server/TomlCheck.h"

namespace kalvex::server {

namespace {

constexpr const char* kSyntax = platform::Translatable("błąd składni (%s)");

// The next character. Where it is another one than it should be the library reads on and tells that
// with its place.
constexpr std::string_view kNextCharacter = "*cp";

}  // namespace

void OnBrokenRule(std::string_view expression) {
    if (expression.find(kNextCharacter) == std::string_view::npos)
        throw std::logic_error(std::string(expression));
}

std::optional<toml::table> ParseToml(std::string_view text, TomlFault& fault) {
    if (std::optional<TomlFault> found = CheckToml(text)) {
        fault = std::move(*found);
        return std::nullopt;
    }
    try {
        return toml::parse(text);
    } catch (const toml::parse_error& error) {
        const toml::source_position place = error.source().begin;
        fault = {static_cast<int>(place.line),
                 static_cast<int>(place.column),
                 {kSyntax, {std::string(error.description())}}};
    } catch (const std::logic_error& error) {
        fault = {0, 0, {kSyntax, {error.what()}}};
    }
    return std::nullopt;
}

}  // namespace kalvex::server
