#include "engine/DeclaredVariables.h"

#include <algorithm>

#include "engine/ScriptText.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

struct Declaration {
    std::string_view keyword;
    operands::VariableKind kind;
};

constexpr Declaration kDeclarations[] = {
    {"LOCAL", operands::VariableLocal},
    {"POINTER", operands::VariablePointer},
    {"LIST", operands::VariableList},
    {"REMOTE", operands::VariableRemote},
};

}  // namespace

std::vector<DeclaredVar> BuildDeclaredVars(const ScriptText& text) {
    std::vector<DeclaredVar> declared;
    std::string line;
    for (int i = 0; i < text.GetLineCount(); ++i) {
        NormaliseLine(text.GetLine(i), line);
        std::string_view rest = line;
        const std::string keyword = text::ToUpper(text::NextToken(rest));
        const auto row = std::ranges::find(kDeclarations, keyword, &Declaration::keyword);
        if (row == std::end(kDeclarations)) continue;
        DeclaredVar& variable = declared.emplace_back();
        variable.strName = text::NextToken(rest);
        variable.nKind = row->kind;
    }
    return declared;
}

}  // namespace kalvex::engine
