#include "workbench/model/ValuesBeside.h"

#include <algorithm>

#include "operands/VariableTarget.h"
#include "text/LineScanner.h"
#include "text/TextFormat.h"
#include "value/ValueText.h"

namespace kalvex::workbench {

namespace {

using platform::Translatable;

constexpr std::string_view kBetween = "   ";
constexpr std::string_view kCut = "...";
constexpr const char* kNothing = Translatable("brak");
constexpr const char* kElements = Translatable("%s el.");
constexpr const char* kUnknown = Translatable("%s (nieznana)");
constexpr std::size_t kMostLines = 20'000;  // kept; then it begins anew

std::string TextOf(const value::CVal& value, const platform::Translator& translator) {
    if (value.GetType() == value::ValueType::None) return translator.Translate(kNothing);
    std::string text = value::ValueToText(value);
    if (value.IsText()) text = '"' + text + '"';
    if ((value.GetStatus() & value::Status::Unknown) == 0) return text;
    return text::FormatText(translator.Translate(kUnknown), {text});
}

// Null for a pointer that leads nowhere.
std::string TextOf(operands::CVariable* target, std::string_view name,
                   const platform::Translator& translator) {
    value::CVal value;
    if (target == nullptr) return TextOf(value, translator);
    const bool whole = operands::BaseName(name) == name;
    if (whole && target->GetKind() == operands::VariableList) {
        const auto& list = static_cast<const operands::CVariableList&>(*target);
        return text::FormatText(translator.Translate(kElements),
                                {std::to_string(list.Elements().size())});
    }
    target->GetValue(value, value::GetValueKind(name), 1);
    return TextOf(value, translator);
}

std::string TextOf(const engine::CKalvexDoc& document, const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        operands::CVariable* variable = document.Variables().Find(operands::BaseName(name));
        if (variable == nullptr) continue;
        text += text.empty() ? "  " : kBetween;
        text += name;
        if (variable->GetKind() == operands::VariablePointer) {
            text += " -> ";
            text += static_cast<operands::CVariablePointer*>(variable)->GetTargetName();
        }
        text += " = ";
        text += TextOf(operands::FindTarget(document.Variables(), name), name,
                       document.Services().translator);
        if (text.size() > kValuesBesideLength) {
            text.resize(kValuesBesideLength - kCut.size());
            return text.append(kCut);
        }
    }
    return text;
}

std::string_view LineOf(const engine::CKalvexDoc& document, int line) {
    const bool there = line >= 0 && line < document.Text().GetLineCount();
    return there ? document.Text().GetLine(line) : std::string_view();
}

}  // namespace

std::vector<std::string> NamesInLine(std::string_view line) {
    std::string normalised;
    engine::NormaliseLine(line, normalised);
    std::string_view rest = normalised;
    std::vector<std::string> names;
    if (text::NextToken(rest) == ";") return names;
    for (std::string_view token = text::NextToken(rest); !token.empty() && token != ";";
         token = text::NextToken(rest)) {
        if (text::IsWordCharacter(token.front()) && std::ranges::find(names, token) == names.end())
            names.emplace_back(token);
    }
    return names;
}

std::string ValuesBeside(const engine::CKalvexDoc& document, int line) {
    return TextOf(document, NamesInLine(LineOf(document, line)));
}

std::string LineValues::Beside(const engine::CKalvexDoc& document, int line) {
    const std::string_view text = LineOf(document, line);
    if (m_lines.size() > kMostLines) m_lines.clear();
    Entry& entry = m_lines[line];
    if (entry.text != text) entry = {std::string(text), NamesInLine(text)};
    return TextOf(document, entry.names);
}

}  // namespace kalvex::workbench
