#include "operands/VariableTarget.h"

namespace kalvex::operands {

CVariable* FindTarget(const VariableTable& variables, std::string_view name) {
    CVariable* variable = variables.Find(BaseName(name));
    if (variable == nullptr || variable->GetKind() != VariablePointer) return variable;
    return static_cast<CVariablePointer*>(variable)->LookUpTarget();
}

}  // namespace kalvex::operands
