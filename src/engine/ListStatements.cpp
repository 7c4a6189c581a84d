// Statements that change a list and its iterator.
#include <cstdint>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"
#include "value/ValueText.h"

namespace kalvex::engine {

namespace {

// An argument is one token, whatever stands behind it.
bool ReadArgument(CKalvexDoc& document, std::string_view token, value::CVal& out, int wanted) {
    std::string_view text = token;
    if (operands::EvaluateRest(document, text, out, wanted)) return true;
    return document.Fail(operands::ErrorExpression, token);
}

bool ReadIndex(CKalvexDoc& document, std::string_view token, std::int32_t& out) {
    value::CVal value;
    if (!ReadArgument(document, token, value, value::ValueType::Int)) return false;
    out = value::ValueToInt(value);
    return true;
}

bool ReadElement(CKalvexDoc& document, operands::CVariableList& list, std::string_view token,
                 value::CVal& out) {
    return ReadArgument(document, token, out, list.GetValueType(value::KindCurrent, 1));
}

}  // namespace

LineOutcome ExecuteMoveFirst(StatementCall& call) {
    operands::CVariableList* const list = call.document.FindList(text::NextToken(call.rest));
    if (list == nullptr) return LineOutcome::Failed;
    list->MoveFirst();
    return LineOutcome::Finished;
}

LineOutcome ExecuteMoveNext(StatementCall& call) {
    operands::CVariableList* const list = call.document.FindList(text::NextToken(call.rest));
    if (list == nullptr) return LineOutcome::Failed;
    list->MoveNext();
    return LineOutcome::Finished;
}

LineOutcome ExecuteMoveTo(StatementCall& call) {
    operands::CVariableList* const list = call.document.FindList(text::NextToken(call.rest));
    std::int32_t index = 0;
    if (list == nullptr || !ReadIndex(call.document, text::NextToken(call.rest), index)) {
        return LineOutcome::Failed;
    }
    list->MoveTo(index);
    return LineOutcome::Finished;
}

LineOutcome ExecuteAdd(StatementCall& call) {
    operands::CVariableList* const list = call.document.FindList(text::NextToken(call.rest));
    value::CVal element;
    if (list == nullptr ||
        !ReadElement(call.document, *list, text::NextToken(call.rest), element)) {
        return LineOutcome::Failed;
    }
    list->Add(element);
    return LineOutcome::Finished;
}

LineOutcome ExecuteInsert(StatementCall& call) {
    operands::CVariableList* const list = call.document.FindList(text::NextToken(call.rest));
    const std::string_view indexToken = text::NextToken(call.rest);
    const std::string_view elementToken = text::NextToken(call.rest);
    std::int32_t index = 0;
    value::CVal element;
    if (list == nullptr || !ReadIndex(call.document, indexToken, index) ||
        !ReadElement(call.document, *list, elementToken, element)) {
        return LineOutcome::Failed;
    }
    if (list->Insert(index, element) != 0) return LineOutcome::Finished;
    return call.document.Fail(operands::ErrorExpression, indexToken);
}

// Removes the element under the iterator: the index has to be a valid expression and is not used.
LineOutcome ExecuteRemove(StatementCall& call) {
    operands::CVariableList* const list = call.document.FindList(text::NextToken(call.rest));
    std::int32_t index = 0;
    if (list == nullptr || !ReadIndex(call.document, text::NextToken(call.rest), index)) {
        return LineOutcome::Failed;
    }
    list->RemoveCurrent();
    return LineOutcome::Finished;
}

LineOutcome ExecuteRemoveAll(StatementCall& call) {
    operands::CVariableList* const list = call.document.FindList(text::NextToken(call.rest));
    if (list == nullptr) return LineOutcome::Failed;
    list->RemoveAll();
    return LineOutcome::Finished;
}

LineOutcome ExecuteSplit(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view sourceName = text::NextToken(call.rest);
    const std::string_view separators = text::NextToken(call.rest);
    const std::string_view listName = text::NextToken(call.rest);
    if (listName.empty()) return document.Fail(operands::ErrorArguments);
    operands::CVariable* const source = document.FindNamed(sourceName);
    operands::CVariableList* const list = source == nullptr ? nullptr : document.FindList(listName);
    if (list == nullptr) return LineOutcome::Failed;

    value::CVal value;
    const bool readable = source->GetValue(value, value::KindCurrent, 0) == operands::ReadValue;
    const std::string text = readable ? value::ValueToText(value) : std::string();
    std::size_t end = 0;
    for (;;) {
        const std::size_t start = text.find_first_not_of(separators, end);
        if (start == std::string::npos) return LineOutcome::Finished;
        end = text.find_first_of(separators, start);
        list->Add(value::CVal(std::string_view(text).substr(start, end - start)));
    }
}

}  // namespace kalvex::engine
