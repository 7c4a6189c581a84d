// MGET and MPUT: the values of a period in one request.
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

bool Fail(CKalvexDoc& document, ScriptError code, std::string_view text, bool force) {
    document.SetError(code, text, force);
    return false;
}

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
    Fail(call.document, ErrorUndefinedVariable, name, true);
    return nullptr;
}

CVariableList* TakeList(StatementCall& call) {
    const std::string_view name = NextToken(call.rest);
    CVariable* variable = FindVariable(call.document, name);
    if (variable == nullptr) {
        Fail(call.document, ErrorUndefinedVariable, name, true);
        return nullptr;
    }
    if (variable->GetKind() != VariableList) {
        Fail(call.document, ErrorWrongKind, name, false);
        return nullptr;
    }
    return static_cast<CVariableList*>(variable);
}

// Reading a date leaves nothing in the error slot.
bool TakeDate(CKalvexDoc& document, std::string_view& rest, std::int64_t& time) {
    const std::string_view text = TrimBlanks(rest);
    const int code = document.m_nErrorCode;
    const std::string words = document.m_strErrorText;
    const bool read = ParseDateFields(document, rest, time);
    document.SetError(code, words, true);
    return read || Fail(document, ErrorText, text, false);
}

bool CopyAnswer(StatementCall& call, CVariable& variable) {
    CVariableList* list = TakeList(call);
    if (list == nullptr) return false;
    const std::int64_t from = variable.GetRequestStart();
    const std::int64_t to = variable.GetRequestEnd();
    const CArchiveValueList& values = variable.GetSourceRecord()->GetArchValues();
    list->RemoveAll();
    list->Reserve(values.GetSize());
    for (std::size_t i = 0; i < values.GetSize(); ++i) {
        const CVal& value = *values.Get(i);
        if (value.GetTime() > from && value.GetTime() < to) list->Add(value);
    }
    return true;
}

}  // namespace

bool ExecuteMGet(StatementCall& call) {
    CKalvexDoc& document = call.document;
    CVariable* variable = TakeRemote(call);
    if (variable == nullptr) return false;
    const std::string_view type = NextToken(call.rest);
    if (type == "GETDATA") return CopyAnswer(call, *variable);
    const ValueKind kind = KindFromWord(type);
    if (!IsStored(kind)) return Fail(document, ErrorUnknownKeyword, type, false);
    const std::string_view fromWord = NextToken(call.rest);
    if (fromWord != "FROM") return Fail(document, ErrorUnknownKeyword, fromWord, false);
    std::int64_t from = 0;
    if (!TakeDate(document, call.rest, from)) return false;
    // The error names the statement's third word, whatever stands in place of TO.
    if (NextToken(call.rest) != "TO") return Fail(document, ErrorUnknownKeyword, fromWord, false);
    std::int64_t to = 0;
    if (!TakeDate(document, call.rest, to)) return false;
    variable->RequestRange(kind, from, to);
    return true;
}

bool ExecuteMPut(StatementCall& call) {
    CKalvexDoc& document = call.document;
    CVariable* variable = TakeRemote(call);
    if (variable == nullptr) return false;
    const std::string_view type = NextToken(call.rest);
    const ValueKind kind = KindFromWord(type);
    if (!IsStored(kind)) return Fail(document, ErrorUnknownKeyword, type, false);
    CVariableList* list = TakeList(call);
    if (list == nullptr) return false;
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
    return true;
}

}  // namespace kalvex
