// MGET and MPUT: the values of a period in one request.
#include "operands/Keywords.h"
#include "operands/TimeText.h"
#include "sources/InterfaceObj.h"
#include "sources/SourceFamilies.h"
#include "text/LineScanner.h"
#include "value/Bounds.h"

namespace kalvex::sources {

namespace {

// What the last archive write of the document has sent.
class ArchiveValues final : public operands::DocumentPart {
  public:
    value::CArchiveValueList m_list;
};

// A remote variable, or a pointer to one; error 3 for anything else.
operands::CVariable* TakeRemote(engine::StatementCall& call) {
    const std::string_view name = text::NextToken(call.rest);
    operands::CVariable* variable = operands::FindVariable(call.document, name);
    if (variable != nullptr) {
        const operands::VariableKind kind = variable->GetKind();
        const bool remote = kind == operands::VariableRemote ||
                            (kind == operands::VariablePointer &&
                             static_cast<operands::CVariablePointer*>(variable)->GetTargetKind() ==
                                 operands::VariableRemote);
        if (remote) return variable;
    }
    return call.document.FailForced(operands::ErrorUndefinedVariable, name);
}

// Reading a date leaves nothing in the error slot.
bool TakeDate(engine::CKalvexDoc& document, std::string_view& rest, std::int64_t& time) {
    const std::string_view text = text::TrimBlanks(rest);
    const operands::ErrorSlot before = document.LastError();
    const bool read = operands::ParseDateFields(document, rest, time);
    document.SetError(before.m_nErrorCode, before.m_strErrorText, true);
    return read || document.Fail(operands::ErrorText, text);
}

engine::LineOutcome CopyAnswer(engine::StatementCall& call, operands::CVariable& variable) {
    operands::CVariableList* list = call.document.FindList(text::NextToken(call.rest));
    if (list == nullptr) return engine::LineOutcome::Failed;
    const std::int64_t from = variable.GetRequestStart();
    const std::int64_t to = variable.GetRequestEnd();
    const value::CArchiveValueList& values = variable.GetSourceRecord()->GetArchValues();
    value::CheckListRoom(0, values.GetSize());
    list->RemoveAll();
    for (std::size_t i = 0; i < values.GetSize(); ++i) {
        const value::CVal& value = *values.Get(i);
        if (value.GetTime() > from && value.GetTime() < to) list->Add(value);
    }
    return engine::LineOutcome::Finished;
}

}  // namespace

engine::LineOutcome ExecuteMGet(engine::StatementCall& call) {
    engine::CKalvexDoc& document = call.document;
    operands::CVariable* variable = TakeRemote(call);
    if (variable == nullptr) return engine::LineOutcome::Failed;
    const std::string_view type = text::NextToken(call.rest);
    if (type == operands::Keyword::GetData) return CopyAnswer(call, *variable);
    const value::ValueKind kind = value::KindFromWord(type);
    if (!value::IsStored(kind)) return document.Fail(operands::ErrorUnknownKeyword, type);
    const std::string_view fromWord = text::NextToken(call.rest);
    if (fromWord != operands::Keyword::From)
        return document.Fail(operands::ErrorUnknownKeyword, fromWord);
    std::int64_t from = 0;
    if (!TakeDate(document, call.rest, from)) return engine::LineOutcome::Failed;
    // The error names the statement's third word, whatever stands in place of TO.
    if (text::NextToken(call.rest) != operands::Keyword::To)
        return document.Fail(operands::ErrorUnknownKeyword, fromWord);
    std::int64_t to = 0;
    if (!TakeDate(document, call.rest, to)) return engine::LineOutcome::Failed;
    variable->RequestRange(kind, from, to);
    return engine::LineOutcome::Finished;
}

engine::LineOutcome ExecuteMPut(engine::StatementCall& call) {
    engine::CKalvexDoc& document = call.document;
    operands::CVariable* variable = TakeRemote(call);
    if (variable == nullptr) return engine::LineOutcome::Failed;
    const std::string_view type = text::NextToken(call.rest);
    const value::ValueKind kind = value::KindFromWord(type);
    if (!value::IsStored(kind)) return document.Fail(operands::ErrorUnknownKeyword, type);
    operands::CVariableList* list = call.document.FindList(text::NextToken(call.rest));
    if (list == nullptr) return engine::LineOutcome::Failed;
    value::CArchiveValueList& archive =
        document.GetPart<ArchiveValues>(operands::PartId::ArchiveValues).m_list;
    if (kind == value::KindArchive) archive.RemoveAll();
    for (list->MoveFirst(); list->IsIteratorValid();) {
        value::CVal value;
        list->GetValue(value, value::KindCurrent, operands::kAsStored);
        list->MoveNext();
        if (kind == value::KindArchive) {
            archive.Add(std::move(value));
        } else {
            variable->PutValue(kind, value.GetTime(), value, !list->IsIteratorValid());
        }
    }
    if (kind == value::KindArchive && archive.GetSize() != 0) variable->FlushPuts(archive);
    return engine::LineOutcome::Finished;
}

}  // namespace kalvex::sources
