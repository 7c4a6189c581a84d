#include "sources/VariableRemote.h"

#include <utility>

#include "sources/InterfaceClientConnection.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"
#include "vantrel/Attributes.h"

namespace kalvex {

// Without data since the last connect nothing counts, whatever is stored: the script waits.
int CVariableRemote::GetValue(CVal& out, ValueKind kind, int mode) {
    m_pLink->ReadValue(out, kind, mode != 0);
    const CInterfaceClientConnection* connection = m_pLink->GetConnection();
    if (connection == nullptr || !connection->IsDataReady()) return ReadNothing;
    return out.GetType() == ValueType::None ? ReadUnavailable : ReadValue;
}

int CVariableRemote::SetValue(const CVal& value, ValueKind kind) {
    return Store(value, kind);
}

bool CVariableRemote::Store(CVal value, ValueKind kind) {
    if (kind == KindCurrent) return m_pLink->Write(std::move(value));
    if (m_pLink->FindSlot(kind) == nullptr) return false;
    m_pLink->Assign(kind, std::move(value));
    return true;
}

int CVariableRemote::GetValueType(ValueKind kind, int mode) {
    CVal value;
    m_pLink->ReadValue(value, kind, mode != 0);
    return value.GetType();
}

int CVariableRemote::GetStatus(std::uint16_t* out, ValueKind kind) {
    *out = Status::Unknown;
    if (kind == KindCurrent) {
        if (const CVal* value = m_pLink->CurrentValue()) *out = value->GetStatus();
    } else if (const CReportSlot* slot = m_pLink->FindSlot(kind)) {
        *out = slot->m_Value.GetStatus();
    }
    return 1;
}

int CVariableRemote::SetStatus(std::uint16_t word, ValueKind kind) {
    CVal value;
    GetValue(value, kind, 1);
    value.SetStatus(word);
    return Store(std::move(value), kind);
}

int CVariableRemote::GetTime(std::int64_t* out, ValueKind kind) {
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

int CVariableRemote::SetTime(std::int64_t time, ValueKind kind) {
    CVal value;
    GetValue(value, kind, 1);
    value.SetTime(time);
    return Store(std::move(value), kind);
}

int CVariableRemote::CopyFrom(CVariable* source, ValueKind kind) {
    CVal value;
    if (source == nullptr || source->GetValue(value, kind, 1) == ReadNothing) return 0;
    return Store(std::move(value), kind);
}

int CVariableRemote::GetNameValueText(std::string& out, ValueKind) {
    out = GetName();
    out += ':';
    if (const CVarReg* variable = m_pLink->GetVarVal()) out += ValueToText(variable->Value());
    return 1;
}

int CVariableRemote::SetValueText(std::string_view text, ValueKind) {
    return Store(CVal(text), KindCurrent);
}

bool CVariableRemote::HasSlotStatus(ValueKind kind, std::uint16_t bit) const {
    const CReportSlot* slot = m_pLink->FindSlot(kind);
    return slot != nullptr && (slot->m_Value.GetStatus() & bit) != 0;
}

int CVariableRemote::IsReportLoaded(ValueKind kind) {
    return HasSlotStatus(kind, Status::ReportLoaded);
}

int CVariableRemote::IsReportInited(ValueKind kind) {
    return HasSlotStatus(kind, Status::ReportInited);
}

int CVariableRemote::RequestRange(ValueKind kind, std::int64_t from, std::int64_t to) {
    const bool known = IsStored(kind);
    m_tFrom = known ? from : 0;
    m_tTo = known ? to : 0;
    return known && m_pLink->Request(kind, from, to);
}

int CVariableRemote::PutValue(ValueKind kind, std::int64_t time, const CVal& value, bool send) {
    return m_pLink->Put(kind, time, value, send);
}

int CVariableRemote::InitLoad(ValueKind kind, std::int64_t time) {
    return m_pLink->Order(kind == KindArchive ? PeriodAction::Update : PeriodAction::Load, kind,
                          time);
}

int CVariableRemote::InitLoadRefresh(ValueKind kind, std::int64_t time) {
    return m_pLink->Order(PeriodAction::Refresh, kind, time);
}

int CVariableRemote::InitReport(ValueKind kind, std::int64_t time) {
    return m_pLink->Order(PeriodAction::Init, kind, time);
}

int CVariableRemote::InitCalc(ValueKind kind, std::int64_t time) {
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

bool CVariableRemote::DefinitionBits(std::string_view key, unsigned bits) const {
    const CVarDefInfo* definition = Definition();
    return definition != nullptr && (definition->GetNumber(key) & bits) != 0;
}

int CVariableRemote::IsArchived() {
    return DefinitionBits(Attribute::Archive, ArchiveBit::Any);
}

int CVariableRemote::HasHourReport() {
    return DefinitionBits(Attribute::Reports, ReportBit(KindHour));
}

int CVariableRemote::HasDayReport() {
    return DefinitionBits(Attribute::Reports, ReportBit(KindDay));
}

int CVariableRemote::HasMonthReport() {
    return DefinitionBits(Attribute::Reports, ReportBit(KindMonth));
}

int CVariableRemote::HasSpanReport() {
    return DefinitionBits(Attribute::Reports, ReportBit(KindSpan));
}

std::string CVariableRemote::GetDescription() {
    return DefinitionText(Attribute::Description);
}

std::string CVariableRemote::GetDescName() {
    return DefinitionText(Attribute::DescName);
}

std::string CVariableRemote::GetUnit() {
    return DefinitionText(Attribute::Unit);
}

std::string CVariableRemote::GetDispFormat() {
    return DefinitionText(Attribute::DispFormat);
}

std::string CVariableRemote::GetMinVal() {
    return DefinitionText(Attribute::Minimum);
}

std::string CVariableRemote::GetMaxVal() {
    return DefinitionText(Attribute::Maximum);
}

}  // namespace kalvex
