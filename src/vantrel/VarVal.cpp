#include "vantrel/VarVal.h"

#include "value/ValueText.h"

namespace kalvex::vantrel {

const std::string& CVarDefInfo::GetText(std::string_view key) const {
    static const std::string empty;
    for (const auto& [name, text] : m_definition.attributes) {
        if (name == key) return text;
    }
    return empty;
}

std::int64_t CVarDefInfo::GetNumber(std::string_view key) const {
    std::int64_t number = 0;
    value::CVal(GetText(key)).GetValData(value::ValueType::Int64, &number);
    return number;
}

}  // namespace kalvex::vantrel
