#include "sources/VariableRemote.h"

#include <utility>

#include "sources/InterfaceClientConnection.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"
#include "vantrel/Attributes.h"

namespace kalvex::sources {

// Without data since the last connect nothing counts, whatever is stored: the script waits.
int CVariableRemote::GetValue(value::CVal& out, value::ValueKind kind, int mode) {
    if (const value::CVal* value = m_pLink->FindValue(kind, mode != 0)) {
        out = *value;
    } else {
        out = value::CVal();
    }
    const CInterfaceClientConnection* connection = m_pLink->GetConnection();
    if (connection == nullptr || !connection->IsDataReady()) return operands::ReadNothing;
    return out.GetType() == value::ValueType::None ? operands::ReadUnavailable
                                                   : operands::ReadValue;
}

int CVariableRemote::SetValue(const value::CVal& value, value::ValueKind kind) {
    return Store(value, kind);
}

bool CVariableRemote::Store(value::CVal value, value::ValueKind kind) {
    if (kind == value::KindCurrent) return m_pLink->Write(std::move(value));
    if (m_pLink->FindSlot(kind) == nullptr) return false;
    m_pLink->Assign(kind, std::move(value));
    return true;
}

int CVariableRemote::GetValueType(value::ValueKind kind, int mode) {
    const value::CVal* value = m_pLink->FindValue(kind, mode != 0);
    return value == nullptr ? int{value::ValueType::None} : value->GetType();
}

int CVariableRemote::GetStatus(std::uint16_t* out, value::ValueKind kind) {
    *out = value::Status::Unknown;
    if (kind == value::KindCurrent) {
        if (const value::CVal* value = m_pLink->CurrentValue()) *out = value->GetStatus();
    } else if (const ReportSlot* slot = m_pLink->FindSlot(kind)) {
        *out = slot->m_value.GetStatus();
    }
    return 1;
}

int CVariableRemote::SetStatus(std::uint16_t word, value::ValueKind kind) {
    value::CVal value;
    GetValue(value, kind, operands::kAsStored);
    value.SetStatus(word);
    return Store(std::move(value), kind);
}

int CVariableRemote::GetTime(std::int64_t* out, value::ValueKind kind) {
    *out = 0;
    if (kind == value::KindCurrent) {
        if (const value::CVal* value = m_pLink->CurrentValue()) *out = value->GetTime();
    } else if (const ReportSlot* slot = m_pLink->FindSlot(kind)) {
        const std::int64_t time = slot->m_value.GetTime();
        *out = kind == value::KindDay     ? value::GetFirstLocalDayTime(time)
               : kind == value::KindMonth ? value::GetFirstLocalMonthTime(time)
                                          : value::GetFirstLocalHourTime(time);
    }
    return 1;
}

int CVariableRemote::SetTime(std::int64_t time, value::ValueKind kind) {
    value::CVal value;
    GetValue(value, kind, operands::kAsStored);
    value.SetTime(time);
    return Store(std::move(value), kind);
}

int CVariableRemote::CopyFrom(operands::CVariable* source, value::ValueKind kind) {
    value::CVal value;
    if (source == nullptr ||
        source->GetValue(value, kind, operands::kAsStored) == operands::ReadNothing)
        return 0;
    return Store(std::move(value), kind);
}

int CVariableRemote::GetNameValueText(std::string& out, value::ValueKind) {
    out = GetName();
    out += ':';
    if (const CVarReg* variable = m_pLink->GetVarVal())
        out += value::ValueToText(variable->Value());
    return 1;
}

int CVariableRemote::SetValueText(std::string_view text, value::ValueKind) {
    return Store(value::CVal(text), value::KindCurrent);
}

bool CVariableRemote::HasSlotStatus(value::ValueKind kind, std::uint16_t bit) const {
    const ReportSlot* slot = m_pLink->FindSlot(kind);
    return slot != nullptr && (slot->m_value.GetStatus() & bit) != 0;
}

int CVariableRemote::IsReportLoaded(value::ValueKind kind) {
    return HasSlotStatus(kind, value::Status::ReportLoaded);
}

int CVariableRemote::IsReportInited(value::ValueKind kind) {
    return HasSlotStatus(kind, value::Status::ReportInited);
}

int CVariableRemote::RequestRange(value::ValueKind kind, std::int64_t from, std::int64_t to) {
    const bool known = value::IsStored(kind);
    m_tFrom = known ? from : 0;
    m_tTo = known ? to : 0;
    return known && m_pLink->Request(kind, from, to);
}

int CVariableRemote::PutValue(value::ValueKind kind, std::int64_t time, const value::CVal& value,
                              bool send) {
    return m_pLink->Put(kind, time, value, send);
}

int CVariableRemote::InitLoad(value::ValueKind kind, std::int64_t time) {
    return m_pLink->Order(
        kind == value::KindArchive ? vantrel::PeriodAction::Update : vantrel::PeriodAction::Load,
        kind, time);
}

int CVariableRemote::InitLoadRefresh(value::ValueKind kind, std::int64_t time) {
    return m_pLink->Order(vantrel::PeriodAction::Refresh, kind, time);
}

int CVariableRemote::InitReport(value::ValueKind kind, std::int64_t time) {
    return m_pLink->Order(vantrel::PeriodAction::Init, kind, time);
}

int CVariableRemote::InitCalc(value::ValueKind kind, std::int64_t time) {
    return m_pLink->Order(vantrel::PeriodAction::Calculate, kind, time);
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

const vantrel::CVarDefInfo* CVariableRemote::Definition() const {
    const CVarReg* variable = m_pLink->GetVarVal();
    return variable == nullptr ? nullptr : variable->GetDefInfo();
}

std::string CVariableRemote::DefinitionText(std::string_view key) const {
    const vantrel::CVarDefInfo* definition = Definition();
    return definition == nullptr ? std::string() : definition->GetText(key);
}

bool CVariableRemote::DefinitionBits(std::string_view key, unsigned bits) const {
    const vantrel::CVarDefInfo* definition = Definition();
    return definition != nullptr && (definition->GetNumber(key) & bits) != 0;
}

int CVariableRemote::IsArchived() {
    return DefinitionBits(vantrel::Attribute::Archive, vantrel::ArchiveBit::Any);
}

int CVariableRemote::HasHourReport() {
    return DefinitionBits(vantrel::Attribute::Reports, vantrel::ReportBit(value::KindHour));
}

int CVariableRemote::HasDayReport() {
    return DefinitionBits(vantrel::Attribute::Reports, vantrel::ReportBit(value::KindDay));
}

int CVariableRemote::HasMonthReport() {
    return DefinitionBits(vantrel::Attribute::Reports, vantrel::ReportBit(value::KindMonth));
}

int CVariableRemote::HasSpanReport() {
    return DefinitionBits(vantrel::Attribute::Reports, vantrel::ReportBit(value::KindSpan));
}

std::string CVariableRemote::GetDescription() {
    return DefinitionText(vantrel::Attribute::Description);
}

std::string CVariableRemote::GetDescName() {
    return DefinitionText(vantrel::Attribute::DescName);
}

std::string CVariableRemote::GetUnit() {
    return DefinitionText(vantrel::Attribute::Unit);
}

std::string CVariableRemote::GetDispFormat() {
    return DefinitionText(vantrel::Attribute::DispFormat);
}

std::string CVariableRemote::GetMinVal() {
    return DefinitionText(vantrel::Attribute::Minimum);
}

std::string CVariableRemote::GetMaxVal() {
    return DefinitionText(vantrel::Attribute::Maximum);
}

}  // namespace kalvex::sources
