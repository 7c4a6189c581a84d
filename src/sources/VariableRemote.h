// A script's variable that stands for one variable of one data server: its current value, the
// values of its reports, and a set of archive values. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "operands/Variable.h"
#include "sources/InterfaceObj.h"
#include "vantrel/VarVal.h"

namespace kalvex::sources {

class CVariableRemote final : public operands::CVariable {
  public:
    CVariableRemote(std::string_view name, std::unique_ptr<CInterfaceObj> link)
        : operands::CVariable(name), m_pLink(std::move(link)) {}

    operands::VariableKind GetKind() const override { return operands::VariableRemote; }
    // A value that is unusable, or was never there, leaves an empty `out`.
    int GetValue(value::CVal& out, value::ValueKind kind, int mode) override;
    // The current value goes to the server and is seen here at once; a report value stays here.
    int SetValue(const value::CVal& value, value::ValueKind kind) override;
    int GetValueType(value::ValueKind kind, int mode) override;
    int GetStatus(std::uint16_t* out, value::ValueKind kind) override;
    int SetStatus(std::uint16_t word, value::ValueKind kind) override;
    int GetTime(std::int64_t* out,
                value::ValueKind kind) override;  // of a report: the start of its period
    int SetTime(std::int64_t time, value::ValueKind kind) override;
    int CopyFrom(operands::CVariable* source, value::ValueKind kind) override;
    int GetNameValueText(std::string& out, value::ValueKind kind) override;
    int SetValueText(std::string_view text, value::ValueKind kind) override;
    int IsReportLoaded(value::ValueKind kind) override;
    int IsReportInited(value::ValueKind kind) override;
    int RequestRange(value::ValueKind kind, std::int64_t from, std::int64_t to) override;
    std::int64_t GetRequestStart() override { return m_tFrom; }
    std::int64_t GetRequestEnd() override { return m_tTo; }
    int IsReady(value::ValueKind kind) override { return m_pLink->IsAnswered(kind); }
    int PutValue(value::ValueKind kind, std::int64_t time, const value::CVal& value,
                 bool send) override;
    int FlushPuts(value::CArchiveValueList& list) override { return m_pLink->PutArchive(list); }
    int InitLoad(value::ValueKind kind, std::int64_t time) override;
    int InitLoadRefresh(value::ValueKind kind, std::int64_t time) override;
    int InitReport(value::ValueKind kind, std::int64_t time) override;
    int InitCalc(value::ValueKind kind, std::int64_t time) override;
    int SetLocked(bool flag) override;
    int SetIgnoreUnknown(bool flag) override;
    CInterfaceObj* GetSourceRecord() override { return m_pLink.get(); }
    int IsArchived() override;
    int HasHourReport() override;
    int HasDayReport() override;
    int HasMonthReport() override;
    int HasSpanReport() override;
    std::string GetDescription() override;
    std::string GetDescName() override;
    std::string GetUnit() override;
    std::string GetDispFormat() override;
    std::string GetMinVal() override;
    std::string GetMaxVal() override;

  private:
    bool Store(value::CVal value, value::ValueKind kind);
    bool HasSlotStatus(value::ValueKind kind, std::uint16_t bit) const;
    const vantrel::CVarDefInfo* Definition() const;
    std::string DefinitionText(std::string_view key) const;
    bool DefinitionBits(std::string_view key, unsigned bits) const;

    std::int64_t m_tFrom = 0;
    std::int64_t m_tTo = 0;
    std::unique_ptr<CInterfaceObj> m_pLink;
};

}  // namespace kalvex::sources
