// What is offered while a script is typed: the keywords, and the members behind a dotted prefix.
// Any thread.
#pragma once

#include <span>
#include <string_view>

#include "workbench/model/ScriptWords.h"

namespace kalvex::workbench {

inline constexpr int kKeywordImage = 0;
inline constexpr int kMemberImage = 3;

// In the order in which it is shown.
struct OfferedWords {
    Words words;
    int image = kKeywordImage;  // that of all its words

    bool IsEmpty() const { return words.empty(); }
};

OfferedWords KeywordCompletion();

// A prefix that is known whatever the script declares; with case.
struct PrefixRow {
    std::string_view prefix;  // with its last separator
    Words members;
};
using PrefixMap = std::span<const PrefixRow>;

PrefixMap KnownPrefixes();

enum class DeclaredKind { None = -1, Remote, List, Pointer };

// A statement that declares a variable which has members.
struct DeclarationRow {
    std::string_view keyword;
    DeclaredKind kind;
    Words (*members)();
};

std::span<const DeclarationRow> Declarations();

}  // namespace kalvex::workbench
