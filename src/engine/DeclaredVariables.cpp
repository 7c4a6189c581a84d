#include "engine/DeclaredVariables.h"

#include <algorithm>

#include "engine/ScriptText.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex {

namespace {

struct Declaration {
    std::string_view keyword;
    VariableKind kind;
};

constexpr Declaration kDeclarations[] = {
    {"LOCAL", VariableLocal},
    {"POINTER", VariablePointer},
    {"LIST", VariableList},
    {"REMOTE", VariableRemote},
};

}  // namespace

std::vector<CDeclaredVar> BuildDeclaredVars(const CScriptText& text) {
    std::vector<CDeclaredVar> declared;
    std::string line;
    for (int i = 0; i < text.GetLineCount(); ++i) {
        NormaliseLine(text.GetLine(i), line);
        std::string_view rest = line;
        const std::string keyword = ToUpper(NextToken(rest));
        const auto row = std::ranges::find(kDeclarations, keyword, &Declaration::keyword);
        if (row == std::end(kDeclarations)) continue;
        CDeclaredVar& variable = declared.emplace_back();
        variable.strName = NextToken(rest);
        variable.nKind = row->kind;
    }
    return declared;
}

}  // namespace kalvex
