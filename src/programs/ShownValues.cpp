#include "programs/ShownValues.h"

#include <algorithm>
#include <cmath>

#include "text/Characters.h"
#include "text/CodePage.h"
#include "value/Status.h"
#include "value/ValueText.h"

namespace kalvex::programs {

std::string ShownText(std::string_view text) {
    std::string shown(text);
    std::ranges::replace_if(shown, text::IsControl, ' ');
    return text::ToUtf8(shown);
}

std::string ShownStatus(std::uint16_t status) {
    std::string shown;
    const auto add = [&shown](std::string_view word) {
        if (!shown.empty()) shown += ' ';
        shown += word;
    };
    for (const value::StatusWord& row : value::StatusWords()) {
        if ((status & row.bit) == 0) continue;
        add(row.word);
        status &= static_cast<std::uint16_t>(~row.bit);
    }
    if (status != 0) add(std::to_string(status));
    return shown;
}

std::string ShownContent(const value::CVal& value) {
    if (value.IsText()) return '"' + ShownText(value.Text()) + '"';
    return value.GetType() == value::ValueType::None ? "-" : value::ValueToText(value);
}

nlohmann::ordered_json JsonContent(const value::CVal& value) {
    if (value.IsText()) return text::ToUtf8(value.Text());
    if (value::ValueType::IsInteger(value.GetType())) return value.Integer();
    if (value.GetType() == value::ValueType::Double && std::isfinite(value.Real()))
        return value.Real();
    return nullptr;
}

}  // namespace kalvex::programs
