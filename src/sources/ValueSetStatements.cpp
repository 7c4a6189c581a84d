// MGET and MPUT: the values of a period in one request.
#include "operands/Keywords.h"
#include "operands/TimeText.h"
#include "sources/InterfaceObj.h"
#include "sources/SourceFamilies.h"
#include "text/LineScanner.h"

namespace kalvex {

namespace {

// What the last archive write of the document has sent.
class ArchiveValues final : public CDocumentPart {
  public:
    CArchiveValueList m_List;
};

// A remote variable, or a pointer to one; error 3 for anything else.
CVariable* TakeRemote(StatementCall& call) {
    const std::string_view name = NextToken(call.rest);
    CVariable* variable = FindVariable(call.document, name);
    if (variable != nullptr) {
        const VariableKind kind = variable->GetKind();
        const bool remote =
            kind == VariableRemote ||
            (kind == VariablePointer &&
             static_cast<CVariablePointer*>(variable)->GetTargetKind() == VariableRemote);
        if (remote) return variable;
    }
    return call.document.FailForced(ErrorUndefinedVariable, name);
}

// Reading a date leaves nothing in the error slot.
bool TakeDate(CKalvexDoc& document, std::string_view& rest, std::int64_t& time) {
    const std::string_view text = TrimBlanks(rest);
    const ErrorSlot before = document.LastError();
    const bool read = ParseDateFields(document, rest, time);
    document.SetError(before.m_nErrorCode, before.m_strErrorText, true);
    return read || document.Fail(ErrorText, text);
}

LineOutcome CopyAnswer(StatementCall& call, CVariable& variable) {
    CVariableList* list = call.document.FindList(NextToken(call.rest));
    if (list == nullptr) return LineOutcome::Failed;
    const std::int64_t from = variable.GetRequestStart();
    const std::int64_t to = variable.GetRequestEnd();
    const CArchiveValueList& values = variable.GetSourceRecord()->GetArchValues();
    list->RemoveAll();
    list->Reserve(values.GetSize());
    for (std::size_t i = 0; i < values.GetSize(); ++i) {
        const CVal& value = *values.Get(i);
        if (value.GetTime() > from && value.GetTime() < to) list->Add(value);
    }
    return LineOutcome::Finished;
}

}  // namespace

LineOutcome ExecuteMGet(StatementCall& call) {
    CKalvexDoc& document = call.document;
    CVariable* variable = TakeRemote(call);
    if (variable == nullptr) return LineOutcome::Failed;
    const std::string_view type = NextToken(call.rest);
    if (type == Keyword::GetData) return CopyAnswer(call, *variable);
    const ValueKind kind = KindFromWord(type);
    if (!IsStored(kind)) return document.Fail(ErrorUnknownKeyword, type);
    const std::string_view fromWord = NextToken(call.rest);
    if (fromWord != Keyword::From) return document.Fail(ErrorUnknownKeyword, fromWord);
    std::int64_t from = 0;
    if (!TakeDate(document, call.rest, from)) return LineOutcome::Failed;
    // The error names the statement's third word, whatever stands in place of TO.
    if (NextToken(call.rest) != Keyword::To) return document.Fail(ErrorUnknownKeyword, fromWord);
    std::int64_t to = 0;
    if (!TakeDate(document, call.rest, to)) return LineOutcome::Failed;
    variable->RequestRange(kind, from, to);
    return LineOutcome::Finished;
}

LineOutcome ExecuteMPut(StatementCall& call) {
    CKalvexDoc& document = call.document;
    CVariable* variable = TakeRemote(call);
    if (variable == nullptr) return LineOutcome::Failed;
    const std::string_view type = NextToken(call.rest);
    const ValueKind kind = KindFromWord(type);
    if (!IsStored(kind)) return document.Fail(ErrorUnknownKeyword, type);
    CVariableList* list = call.document.FindList(NextToken(call.rest));
    if (list == nullptr) return LineOutcome::Failed;
    CArchiveValueList& archive =
        document.GetPart<ArchiveValues>(DocumentPart::ArchiveValues).m_List;
    if (kind == KindArchive) archive.RemoveAll();
    for (list->MoveFirst(); list->IsIteratorValid();) {
        CVal value;
        list->GetValue(value, KindCurrent, 1);
        list->MoveNext();
        if (kind == KindArchive) {
            archive.Add(std::move(value));
        } else {
            variable->PutValue(kind, value.GetTime(), value, !list->IsIteratorValid());
        }
    }
    if (kind == KindArchive && archive.GetSize() != 0) variable->FlushPuts(archive);
    return LineOutcome::Finished;
}

}  // namespace kalvex
