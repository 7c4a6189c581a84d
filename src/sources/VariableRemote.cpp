#include "sources/VariableRemote.h"

#include "sources/InterfaceClientConnection.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"

namespace kalvex {

// Without data since the last connect nothing counts, whatever is stored: the script waits.
int CVariableRemote::GetValue(CVal& out, int kind, int mode) {
    m_pLink->ReadValue(out, kind, mode != 0);
    const CInterfaceClientConnection* connection = m_pLink->GetConnection();
    if (connection == nullptr || !connection->IsDataReady()) return ReadNothing;
    return out.GetType() == ValueType::None ? ReadUnavailable : ReadValue;
}

int CVariableRemote::SetValue(const CVal& value, int kind) {
    if (kind == KindCurrent) return m_pLink->Write(value);
    if (m_pLink->FindSlot(kind) == nullptr) return 0;
    m_pLink->Assign(kind, value);
    return 1;
}

int CVariableRemote::GetValueType(int kind, int mode) {
    CVal value;
    m_pLink->ReadValue(value, kind, mode != 0);
    return value.GetType();
}

int CVariableRemote::GetStatus(std::uint16_t* out, int kind) {
    *out = Status::Unknown;
    if (kind == KindCurrent) {
        if (const CVal* value = m_pLink->CurrentValue()) *out = value->GetStatus();
    } else if (const CReportSlot* slot = m_pLink->FindSlot(kind)) {
        *out = slot->m_Value.GetStatus();
    }
    return 1;
}

int CVariableRemote::SetStatus(std::uint16_t word, int kind) {
    CVal value;
    GetValue(value, kind, 1);
    value.SetStatus(word);
    return SetValue(value, kind);
}

int CVariableRemote::GetTime(std::int64_t* out, int kind) {
    *out = 0;
    if (kind == KindCurrent) {
        if (const CVal* value = m_pLink->CurrentValue()) *out = value->GetTime();
    } else if (const CReportSlot* slot = m_pLink->FindSlot(kind)) {
        const std::int64_t time = slot->m_Value.GetTime();
        *out = kind == KindDay     ? GetFirstLocalDayTime(time)
               : kind == KindMonth ? GetFirstLocalMonthTime(time)
                                   : GetFirstLocalHourTime(time);
    }
    return 1;
}

int CVariableRemote::SetTime(std::int64_t time, int kind) {
    CVal value;
    GetValue(value, kind, 1);
    value.SetTime(time);
    return SetValue(value, kind);
}

int CVariableRemote::CopyFrom(CVariable* source, int kind) {
    CVal value;
    if (source == nullptr || source->GetValue(value, kind, 1) == ReadNothing) return 0;
    return SetValue(value, kind);
}

int CVariableRemote::GetNameValueText(std::string& out, int) {
    out = GetName();
    out += ':';
    if (const CVarReg* variable = m_pLink->GetVarVal()) out += ValueToText(variable->Value());
    return 1;
}

int CVariableRemote::SetValueText(std::string_view text, int) {
    return SetValue(CVal(text), KindCurrent);
}

bool CVariableRemote::HasSlotStatus(int kind, std::uint16_t bit) const {
    const CReportSlot* slot = m_pLink->FindSlot(kind);
    return slot != nullptr && (slot->m_Value.GetStatus() & bit) != 0;
}

int CVariableRemote::IsReportLoaded(int kind) {
    return HasSlotStatus(kind, Status::ReportLoaded);
}

int CVariableRemote::IsReportInited(int kind) {
    return HasSlotStatus(kind, Status::ReportInited);
}

int CVariableRemote::RequestRange(int kind, std::int64_t from, std::int64_t to) {
    const bool known = kind >= KindHour && kind <= KindArchive;
    m_tFrom = known ? from : 0;
    m_tTo = known ? to : 0;
    return known && m_pLink->Request(kind, from, to);
}

int CVariableRemote::PutValue(int kind, std::int64_t time, const CVal& value, bool send) {
    return m_pLink->Put(kind, time, value, send);
}

int CVariableRemote::InitLoad(int kind, std::int64_t time) {
    return m_pLink->Order(kind == KindArchive ? PeriodAction::Update : PeriodAction::Load, kind,
                          time);
}

int CVariableRemote::InitLoadRefresh(int kind, std::int64_t time) {
    return m_pLink->Order(PeriodAction::Refresh, kind, time);
}

int CVariableRemote::InitReport(int kind, std::int64_t time) {
    return m_pLink->Order(PeriodAction::Init, kind, time);
}

int CVariableRemote::InitCalc(int kind, std::int64_t time) {
    return m_pLink->Order(PeriodAction::Calculate, kind, time);
}

int CVariableRemote::SetLocked(bool flag) {
    m_pLink->SetLocked(flag);
    return 1;
}

int CVariableRemote::SetIgnoreUnknown(bool flag) {
    m_pLink->SetIgnoreUnknown(flag);
    return 1;
}

// ---- the definition

const CVarDefInfo* CVariableRemote::Definition() const {
    const CVarReg* variable = m_pLink->GetVarVal();
    return variable == nullptr ? nullptr : variable->GetDefInfo();
}

std::string CVariableRemote::DefinitionText(std::string_view key) const {
    const CVarDefInfo* definition = Definition();
    return definition == nullptr ? std::string() : definition->GetText(key);
}

bool CVariableRemote::DefinitionBits(std::string_view key, std::int64_t bits) const {
    const CVarDefInfo* definition = Definition();
    return definition != nullptr && (definition->GetNumber(key) & bits) != 0;
}

int CVariableRemote::IsArchived() {
    return DefinitionBits("at", 2 | 4 | 32);
}

int CVariableRemote::HasHourReport() {
    return DefinitionBits("rt", 2);
}

int CVariableRemote::HasDayReport() {
    return DefinitionBits("rt", 4);
}

int CVariableRemote::HasMonthReport() {
    return DefinitionBits("rt", 8);
}

int CVariableRemote::HasSpanReport() {
    return DefinitionBits("rt", 16);
}

std::string CVariableRemote::GetDescription() {
    return DefinitionText("de");
}

std::string CVariableRemote::GetDescName() {
    return DefinitionText("nd");
}

std::string CVariableRemote::GetUnit() {
    return DefinitionText("un");
}

std::string CVariableRemote::GetDispFormat() {
    return DefinitionText("fo");
}

std::string CVariableRemote::GetMinVal() {
    return DefinitionText("min");
}

std::string CVariableRemote::GetMaxVal() {
    return DefinitionText("max");
}

}  // namespace kalvex
