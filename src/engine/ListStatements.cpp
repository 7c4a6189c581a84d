// Statements that change a list and its iterator.
#include <cstdint>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/Expression.h"
#include "operands/VariableName.h"
#include "text/LineScanner.h"
#include "value/Bounds.h"
#include "value/ValueText.h"

namespace kalvex::engine {

namespace {

// An argument is one token, whatever stands behind it.
class Argument {
  public:
    explicit Argument(std::string_view token)
        : m_token(token), m_expression(operands::Expression::OfRest(token)) {}

    std::string_view Token() const { return m_token; }

    bool Read(CKalvexDoc& document, value::CVal& out, int wanted) {
        if (m_expression.Evaluate(document, out, wanted)) return true;
        return document.Fail(operands::ErrorExpression, m_token);
    }

    bool ReadIndex(CKalvexDoc& document, std::int32_t& out) {
        value::CVal value;
        if (!Read(document, value, value::ValueType::Int)) return false;
        out = value::ValueToInt(value);
        return true;
    }

    bool ReadElement(CKalvexDoc& document, operands::CVariableList& list, value::CVal& out) {
        return Read(document, out, list.GetValueType(value::KindCurrent, 1));
    }

  private:
    std::string_view m_token;
    operands::Expression m_expression;
};

struct ListForm final : StatementForm {
    explicit ListForm(std::string_view text) : list(text::NextToken(text)) {}

    operands::VariableName list;
};

// <list> <index or element>
struct ListArgumentForm final : StatementForm {
    explicit ListArgumentForm(std::string_view text)
        : list(text::NextToken(text)), argument(text::NextToken(text)) {}

    operands::VariableName list;
    Argument argument;
};

// <list> <index> <element>
struct InsertForm final : StatementForm {
    explicit InsertForm(std::string_view text)
        : list(text::NextToken(text)),
          index(text::NextToken(text)),
          element(text::NextToken(text)) {}

    operands::VariableName list;
    Argument index;
    Argument element;
};

template <class Take>
void ForEachPiece(std::string_view text, std::string_view separators, Take take) {
    std::size_t end = 0;
    for (;;) {
        const std::size_t start = text.find_first_not_of(separators, end);
        if (start == std::string_view::npos) return;
        end = text.find_first_of(separators, start);
        take(text.substr(start, end - start));
    }
}

}  // namespace

LineOutcome ExecuteMoveFirst(CKalvexDoc& document, LineForm& line) {
    operands::CVariableList* const list = line.Read<ListForm>().list.FindList(document);
    if (list == nullptr) return LineOutcome::Failed;
    list->MoveFirst();
    return LineOutcome::Finished;
}

LineOutcome ExecuteMoveNext(CKalvexDoc& document, LineForm& line) {
    operands::CVariableList* const list = line.Read<ListForm>().list.FindList(document);
    if (list == nullptr) return LineOutcome::Failed;
    list->MoveNext();
    return LineOutcome::Finished;
}

LineOutcome ExecuteMoveTo(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<ListArgumentForm>();
    operands::CVariableList* const list = form.list.FindList(document);
    std::int32_t index = 0;
    if (list == nullptr || !form.argument.ReadIndex(document, index)) {
        return LineOutcome::Failed;
    }
    list->MoveTo(index);
    return LineOutcome::Finished;
}

LineOutcome ExecuteAdd(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<ListArgumentForm>();
    operands::CVariableList* const list = form.list.FindList(document);
    value::CVal element;
    if (list == nullptr || !form.argument.ReadElement(document, *list, element)) {
        return LineOutcome::Failed;
    }
    value::CheckListRoom(list->Elements().size(), 1);
    list->Add(element);
    return LineOutcome::Finished;
}

LineOutcome ExecuteInsert(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<InsertForm>();
    operands::CVariableList* const list = form.list.FindList(document);
    std::int32_t index = 0;
    value::CVal element;
    if (list == nullptr || !form.index.ReadIndex(document, index) ||
        !form.element.ReadElement(document, *list, element)) {
        return LineOutcome::Failed;
    }
    if (list->Insert(index, element) != 0) return LineOutcome::Finished;
    return document.Fail(operands::ErrorExpression, form.index.Token());
}

// Removes the element under the iterator: the index has to be a valid expression and is not used.
LineOutcome ExecuteRemove(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<ListArgumentForm>();
    operands::CVariableList* const list = form.list.FindList(document);
    std::int32_t index = 0;
    if (list == nullptr || !form.argument.ReadIndex(document, index)) {
        return LineOutcome::Failed;
    }
    list->RemoveCurrent();
    return LineOutcome::Finished;
}

LineOutcome ExecuteRemoveAll(CKalvexDoc& document, LineForm& line) {
    operands::CVariableList* const list = line.Read<ListForm>().list.FindList(document);
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
    // There are no more than every other byte, so a text of usual size need not be gone through.
    if ((text.size() + 1) / 2 > value::kMostElements - list->Elements().size()) {
        std::size_t count = 0;
        ForEachPiece(text, separators, [&count](std::string_view) { ++count; });
        value::CheckListRoom(list->Elements().size(), count);
    }
    ForEachPiece(text, separators,
                 [list](std::string_view piece) { list->Add(value::CVal(piece)); });
    return LineOutcome::Finished;
}

}  // namespace kalvex::engine
