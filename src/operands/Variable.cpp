#include "operands/Variable.h"

#include <algorithm>

#include "operands/ScriptContext.h"
#include "value/Bounds.h"
#include "value/ValueText.h"

namespace kalvex::operands {

int CVariable::GetValue(value::CVal&, value::ValueKind, int) {
    return 0;
}
const value::CVal* CVariable::PeekValue(value::ValueKind) {
    return nullptr;
}
int CVariable::SetValue(const value::CVal&, value::ValueKind) {
    return 0;
}
int CVariable::GetValueType(value::ValueKind, int) {
    return 0;
}
int CVariable::GetStatus(std::uint16_t*, value::ValueKind) {
    return 0;
}
int CVariable::SetStatus(std::uint16_t, value::ValueKind) {
    return 0;
}
int CVariable::GetTime(std::int64_t*, value::ValueKind) {
    return 0;
}
int CVariable::SetTime(std::int64_t, value::ValueKind) {
    return 0;
}
int CVariable::CopyFrom(CVariable*, value::ValueKind) {
    return 0;
}
int CVariable::GetNameValueText(std::string&, value::ValueKind) {
    return 0;
}
int CVariable::SetValueText(std::string_view, value::ValueKind) {
    return 0;
}
int CVariable::IsReportLoaded(value::ValueKind) {
    return 0;
}
int CVariable::IsReportInited(value::ValueKind) {
    return 0;
}
int CVariable::RequestRange(value::ValueKind, std::int64_t, std::int64_t) {
    return 0;
}
std::int64_t CVariable::GetRequestStart() {
    return 0;
}
std::int64_t CVariable::GetRequestEnd() {
    return 0;
}
int CVariable::IsReady(value::ValueKind) {
    return 0;
}
int CVariable::PutValue(value::ValueKind, std::int64_t, const value::CVal&, bool) {
    return 0;
}
int CVariable::FlushPuts(value::CArchiveValueList&) {
    return 0;
}
int CVariable::InitLoad(value::ValueKind, std::int64_t) {
    return 0;
}
int CVariable::InitLoadRefresh(value::ValueKind, std::int64_t) {
    return 0;
}
int CVariable::InitReport(value::ValueKind, std::int64_t) {
    return 0;
}
int CVariable::InitCalc(value::ValueKind, std::int64_t) {
    return 0;
}
int CVariable::SetLocked(bool) {
    return 0;
}
int CVariable::SetIgnoreUnknown(bool) {
    return 0;
}
sources::CInterfaceObj* CVariable::GetSourceRecord() {
    return nullptr;
}
int CVariable::IsArchived() {
    return 0;
}
int CVariable::HasHourReport() {
    return 0;
}
int CVariable::HasDayReport() {
    return 0;
}
int CVariable::HasMonthReport() {
    return 0;
}
int CVariable::HasSpanReport() {
    return 0;
}
std::string CVariable::GetDescription() {
    return {};
}
std::string CVariable::GetDescName() {
    return {};
}
std::string CVariable::GetUnit() {
    return {};
}
std::string CVariable::GetDispFormat() {
    return {};
}
std::string CVariable::GetMinVal() {
    return {};
}
std::string CVariable::GetMaxVal() {
    return {};
}

int VariableStored::GetValueType(value::ValueKind kind, int) {
    value::CVal value;
    return GetValue(value, kind, kAsStored) == 0 ? value::ValueType::Unreadable : value.GetType();
}

int VariableStored::GetStatus(std::uint16_t* out, value::ValueKind kind) {
    value::CVal value;
    if (GetValue(value, kind, kAsStored) == 0) return 0;
    *out = value.GetStatus();
    return 1;
}

int VariableStored::SetStatus(std::uint16_t word, value::ValueKind kind) {
    value::CVal value;
    if (GetValue(value, kind, kAsStored) == 0) return 0;
    value.SetStatus(word);
    return SetValue(value, kind);
}

int VariableStored::GetTime(std::int64_t* out, value::ValueKind kind) {
    value::CVal value;
    if (GetValue(value, kind, kAsStored) == 0) return 0;
    *out = value.GetTime();
    return 1;
}

int VariableStored::SetTime(std::int64_t time, value::ValueKind kind) {
    value::CVal value;
    if (GetValue(value, kind, kAsStored) == 0) return 0;
    value.SetTime(time);
    return SetValue(value, kind);
}

int VariableStored::CopyFrom(CVariable* source, value::ValueKind kind) {
    value::CVal value;
    if (source == nullptr || source->GetValue(value, kind, kAsStored) == 0) return 0;
    return SetValue(value, kind);
}

int VariableStored::GetNameValueText(std::string& out, value::ValueKind kind) {
    value::CVal value;
    if (GetValue(value, kind, 0) == 0) return 0;
    out = GetName() + ':' + value::ValueToText(value);
    return 1;
}

int VariableStored::SetValueText(std::string_view text, value::ValueKind) {
    return SetValue(value::CVal(text), value::KindCurrent);
}

int VariableStored::IsReportLoaded(value::ValueKind) {
    return 1;
}
int VariableStored::IsReportInited(value::ValueKind) {
    return 1;
}
int VariableStored::RequestRange(value::ValueKind, std::int64_t, std::int64_t) {
    return 1;
}
int VariableStored::IsReady(value::ValueKind) {
    return 1;
}
int VariableStored::PutValue(value::ValueKind, std::int64_t, const value::CVal&, bool) {
    return 1;
}
int VariableStored::InitLoad(value::ValueKind, std::int64_t) {
    return 1;
}
int VariableStored::InitLoadRefresh(value::ValueKind, std::int64_t) {
    return 1;
}
int VariableStored::InitReport(value::ValueKind, std::int64_t) {
    return 1;
}
int VariableStored::InitCalc(value::ValueKind, std::int64_t) {
    return 1;
}
int VariableStored::SetLocked(bool) {
    return 1;
}

int VariableHeld::GetValueType(value::ValueKind kind, int) {
    const value::CVal* stored = FindStored(kind);
    return stored == nullptr ? value::ValueType::Unreadable : stored->GetType();
}

int VariableHeld::GetStatus(std::uint16_t* out, value::ValueKind kind) {
    const value::CVal* stored = FindStored(kind);
    if (stored == nullptr) return 0;
    *out = stored->GetStatus();
    return 1;
}

int VariableHeld::GetTime(std::int64_t* out, value::ValueKind kind) {
    const value::CVal* stored = FindStored(kind);
    if (stored == nullptr) return 0;
    *out = stored->GetTime();
    return 1;
}

int CVariableLocal::GetValue(value::CVal& out, value::ValueKind kind, int) {
    const value::CVal* stored = FindStored(kind);
    if (stored == nullptr) return 0;
    out = *stored;
    return 1;
}

int CVariableLocal::SetValue(const value::CVal& value, value::ValueKind kind) {
    if (!HasKind(kind)) return 0;
    m_values[kind - value::KindCurrent] = value;
    return kind == value::KindHour ? 0 : 1;
}

int CVariableList::GetValue(value::CVal& out, value::ValueKind kind, int mode) {
    const value::CVal* stored = FindStored(kind);
    if (stored == nullptr) return 0;
    out = *stored;
    return mode == 0 && (out.GetStatus() & value::Status::Unknown) != 0 ? 0 : 1;
}

const value::CVal* CVariableList::FindStored(value::ValueKind kind) const {
    if (kind != value::KindCurrent || !IsIteratorValid()) return nullptr;
    return &m_elements[static_cast<std::size_t>(m_iterator)];
}

const value::CVal* CVariableList::PeekValue(value::ValueKind kind) {
    const value::CVal* stored = FindStored(kind);
    if (stored == nullptr || (stored->GetStatus() & value::Status::Unknown) != 0) return nullptr;
    return stored;
}

int CVariableList::SetValue(const value::CVal& value, value::ValueKind kind) {
    if (kind != value::KindCurrent || !IsIteratorValid()) return 0;
    m_elements[static_cast<std::size_t>(m_iterator)] = value;
    return 1;
}

int CVariableList::Insert(int index, const value::CVal& value) {
    if (index < 0) return 0;
    value::CheckListRoom(m_elements.size(), 1);
    m_elements.Insert(std::min(static_cast<std::size_t>(index), m_elements.size()), value);
    return 1;
}

void CVariableList::MoveNext() {
    m_iterator = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_iterator) + 1);
}

bool CVariableList::IsIteratorValid() const {
    return m_iterator >= 0 && static_cast<std::size_t>(m_iterator) < m_elements.size();
}

void CVariableList::RemoveCurrent() {
    if (!IsIteratorValid()) return;
    m_elements.Remove(static_cast<std::size_t>(m_iterator));
    if (m_iterator >= 1) --m_iterator;
}

void CVariableList::RemoveAll() {
    m_elements.Clear();
    m_iterator = -1;
}

// A way of more steps than there are variables leads in a circle.
template <class LookUp>
CVariable* CVariablePointer::Follow(LookUp lookUp) const {
    const CVariablePointer* pointer = this;
    for (std::size_t steps = m_script.Variables().GetSize(); steps > 0; --steps) {
        CVariable* target = lookUp(pointer->m_target);
        if (target == nullptr || target->GetKind() != VariablePointer) return target;
        pointer = static_cast<const CVariablePointer*>(target);
    }
    return nullptr;
}

CVariable* CVariablePointer::FindTarget() const {
    return Follow([this](const std::string& name) { return FindVariable(m_script, name); });
}

CVariable* CVariablePointer::LookUpTarget() const {
    const VariableTable& variables = m_script.Variables();
    return Follow([&](const std::string& name) { return variables.Find(BaseName(name)); });
}

template <class Result, class... Parameters, class... Arguments>
Result CVariablePointer::Forward(Result missing, Result (CVariable::*operation)(Parameters...),
                                 Arguments&&... arguments) {
    CVariable* target = FindTarget();
    if (target == nullptr) return missing;
    return (target->*operation)(std::forward<Arguments>(arguments)...);
}

VariableKind CVariablePointer::GetTargetKind() {
    const CVariable* target = FindVariable(m_script, m_target);
    return target == nullptr ? VariableNone : target->GetKind();
}

int CVariablePointer::GetValue(value::CVal& out, value::ValueKind kind, int mode) {
    return Forward(0, &CVariable::GetValue, out, kind, mode);
}
const value::CVal* CVariablePointer::PeekValue(value::ValueKind kind) {
    return Forward<const value::CVal*>(nullptr, &CVariable::PeekValue, kind);
}
int CVariablePointer::SetValue(const value::CVal& value, value::ValueKind kind) {
    return Forward(0, &CVariable::SetValue, value, kind);
}
int CVariablePointer::GetValueType(value::ValueKind kind, int mode) {
    return Forward(int{value::ValueType::Unreadable}, &CVariable::GetValueType, kind, mode);
}
int CVariablePointer::GetStatus(std::uint16_t* out, value::ValueKind kind) {
    return Forward(0, &CVariable::GetStatus, out, kind);
}
int CVariablePointer::SetStatus(std::uint16_t word, value::ValueKind kind) {
    return Forward(0, &CVariable::SetStatus, word, kind);
}
int CVariablePointer::GetTime(std::int64_t* out, value::ValueKind kind) {
    return Forward(0, &CVariable::GetTime, out, kind);
}
int CVariablePointer::SetTime(std::int64_t time, value::ValueKind kind) {
    return Forward(0, &CVariable::SetTime, time, kind);
}
int CVariablePointer::CopyFrom(CVariable* source, value::ValueKind kind) {
    return Forward(0, &CVariable::CopyFrom, source, kind);
}
int CVariablePointer::GetNameValueText(std::string& out, value::ValueKind kind) {
    return Forward(0, &CVariable::GetNameValueText, out, kind);
}
int CVariablePointer::SetValueText(std::string_view text, value::ValueKind kind) {
    return Forward(0, &CVariable::SetValueText, text, kind);
}
int CVariablePointer::IsReportLoaded(value::ValueKind kind) {
    return Forward(0, &CVariable::IsReportLoaded, kind);
}
int CVariablePointer::IsReportInited(value::ValueKind kind) {
    return Forward(0, &CVariable::IsReportInited, kind);
}
int CVariablePointer::RequestRange(value::ValueKind kind, std::int64_t from, std::int64_t to) {
    return Forward(0, &CVariable::RequestRange, kind, from, to);
}
std::int64_t CVariablePointer::GetRequestStart() {
    return Forward(std::int64_t{0}, &CVariable::GetRequestStart);
}
std::int64_t CVariablePointer::GetRequestEnd() {
    return Forward(std::int64_t{0}, &CVariable::GetRequestEnd);
}
int CVariablePointer::IsReady(value::ValueKind kind) {
    return Forward(0, &CVariable::IsReady, kind);
}
int CVariablePointer::PutValue(value::ValueKind kind, std::int64_t time, const value::CVal& value,
                               bool send) {
    return Forward(0, &CVariable::PutValue, kind, time, value, send);
}
int CVariablePointer::FlushPuts(value::CArchiveValueList& list) {
    return Forward(0, &CVariable::FlushPuts, list);
}
int CVariablePointer::InitLoad(value::ValueKind kind, std::int64_t time) {
    return Forward(0, &CVariable::InitLoad, kind, time);
}
int CVariablePointer::InitLoadRefresh(value::ValueKind kind, std::int64_t time) {
    return Forward(0, &CVariable::InitLoadRefresh, kind, time);
}
int CVariablePointer::InitReport(value::ValueKind kind, std::int64_t time) {
    return Forward(0, &CVariable::InitReport, kind, time);
}
int CVariablePointer::InitCalc(value::ValueKind kind, std::int64_t time) {
    return Forward(0, &CVariable::InitCalc, kind, time);
}
int CVariablePointer::SetLocked(bool flag) {
    return Forward(0, &CVariable::SetLocked, flag);
}
int CVariablePointer::SetIgnoreUnknown(bool flag) {
    return Forward(0, &CVariable::SetIgnoreUnknown, flag);
}
sources::CInterfaceObj* CVariablePointer::GetSourceRecord() {
    return Forward<sources::CInterfaceObj*>(nullptr, &CVariable::GetSourceRecord);
}
int CVariablePointer::IsArchived() {
    return Forward(0, &CVariable::IsArchived);
}
int CVariablePointer::HasHourReport() {
    return Forward(0, &CVariable::HasHourReport);
}
int CVariablePointer::HasDayReport() {
    return Forward(0, &CVariable::HasDayReport);
}
int CVariablePointer::HasMonthReport() {
    return Forward(0, &CVariable::HasMonthReport);
}
int CVariablePointer::HasSpanReport() {
    return Forward(0, &CVariable::HasSpanReport);
}
std::string CVariablePointer::GetDescription() {
    return Forward(std::string(), &CVariable::GetDescription);
}
std::string CVariablePointer::GetDescName() {
    return Forward(std::string(), &CVariable::GetDescName);
}
std::string CVariablePointer::GetUnit() {
    return Forward(std::string(), &CVariable::GetUnit);
}
std::string CVariablePointer::GetDispFormat() {
    return Forward(std::string(), &CVariable::GetDispFormat);
}
std::string CVariablePointer::GetMinVal() {
    return Forward(std::string(), &CVariable::GetMinVal);
}
std::string CVariablePointer::GetMaxVal() {
    return Forward(std::string(), &CVariable::GetMaxVal);
}

CVariable* VariableTable::Find(std::string_view name) const {
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? nullptr : found->second;
}

CVariable& VariableTable::Append(std::unique_ptr<CVariable> variable) {
    CVariable& added = *m_arrVariables.emplace_back(std::move(variable));
    m_byName.emplace(added.GetName(), &added);
    ++m_generation;
    return added;
}

void VariableTable::RemoveAll() {
    m_byName.clear();
    m_arrVariables.clear();
    ++m_generation;
}

std::string_view BaseName(std::string_view name) {
    return name.substr(0, name.find('.', 1));
}

CVariable* FindVariable(ScriptContext& script, std::string_view name) {
    const std::string_view base = BaseName(name);
    CVariable* variable = script.Variables().Find(base);
    if (variable == nullptr) script.SetError(ErrorUndefinedVariable, base, false);
    return variable;
}

bool GetVariableStatus(ScriptContext& script, std::string_view name, std::uint16_t* out) {
    CVariable* variable = FindVariable(script, name);
    return variable != nullptr && variable->GetStatus(out, value::GetValueKind(name)) != 0;
}

bool GetVariableTime(ScriptContext& script, std::string_view name, std::int64_t* out) {
    CVariable* variable = FindVariable(script, name);
    std::int64_t time = 0;
    if (variable == nullptr || variable->GetTime(&time, value::GetValueKind(name)) == 0 ||
        time < 0) {
        return false;
    }
    *out = time;
    return true;
}

}  // namespace kalvex::operands
