#include "workbench/model/CompletionTables.h"

#include <array>

namespace kalvex::workbench {

namespace {

constexpr std::string_view kGmtMinute[] = {"GMTMIN"};
constexpr std::string_view kMinute[] = {"MIN"};
constexpr std::string_view kSecond[] = {"SEC"};

constexpr DeclarationRow kDeclarations[] = {
    {"REMOTE", DeclaredKind::Remote, RemoteMembers},
    {"LIST", DeclaredKind::List, ListMembers},
    {"POINTER", DeclaredKind::Pointer, PointerMembers},
};

}  // namespace

OfferedWords KeywordCompletion() {
    return {KeywordWords(), kKeywordImage};
}

PrefixMap KnownPrefixes() {
    static const std::array rows = std::to_array<PrefixRow>({
        {"TIME.", TimeMembers()},
        {"TIME.GMTHOUR.", kGmtMinute},
        {"TIME.GMTHOUR.GMTMIN.", kSecond},
        {"TIME.GMTMIN.", kSecond},
        {"TIME.HOUR.", kMinute},
        {"TIME.HOUR.MIN.", kSecond},
        {"TIME.LOCALHOUR.", kMinute},
        {"TIME.LOCALHOUR.MIN.", kSecond},
        {"TIME.MIN.", kSecond},
        {"TIME.WINTERHOUR.", kMinute},
        {"TIME.WINTERHOUR.MIN.", kSecond},
    });
    return rows;
}

std::span<const DeclarationRow> Declarations() {
    return kDeclarations;
}

}  // namespace kalvex::workbench
