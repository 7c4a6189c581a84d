// A TOML text as a tree. toml++ comes in through this header alone, which settles how it is built.
#pragma once

#include <optional>
#include <string_view>

#include "platform/Translator.h"

#define TOML_EXCEPTIONS 1
#define TOML_HEADER_ONLY 0
// The text is a stranger's, so what the library takes for granted is asked each time, whatever the
// build.
#define TOML_ASSERT(expression) \
    ((expression) ? static_cast<void>(0) : kalvex::server::OnBrokenRule(#expression))

namespace kalvex::server {

// Throws, but where the library itself goes on to tell what is wrong with the text.
void OnBrokenRule(std::string_view expression);

}  // namespace kalvex::server

#pragma push_macro("NDEBUG")
#undef NDEBUG
#include <toml++/toml.h>
#pragma pop_macro("NDEBUG")

namespace kalvex::server {

// Tables and lists lie within each other so deep: each part of a key and each bracket counts.
inline constexpr int kDeepestToml = 64;

struct TomlFault {
    int line = 0;    // both from 1, 0 where there is none
    int column = 0;  // in characters
    platform::Notice reason;
};

// The text is UTF-8. Nothing, with the fault, when it is no TOML or deeper than that. Any thread.
std::optional<toml::table> ParseToml(std::string_view text, TomlFault& fault);

}  // namespace kalvex::server
