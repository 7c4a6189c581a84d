#include "operands/ScriptErrors.h"

namespace kalvex::operands {

namespace {

constexpr ScriptErrorRow kRows[] = {
#define KALVEX_ROW(code, name, text, translated) {name, text, translated},
    KALVEX_SCRIPT_ERRORS(KALVEX_ROW)
#undef KALVEX_ROW
};

}  // namespace

const ScriptErrorRow* FindScriptError(int code) {
    for (const ScriptErrorRow& row : kRows) {
        if (row.code == code) return &row;
    }
    return nullptr;
}

}  // namespace kalvex::operands
