// A server variable whose answers are set by hand.
#pragma once

#include <string>

#include "operands/Variable.h"

namespace kalvex {

class HandRemote final : public CVariableStored {
  public:
    using CVariableStored::CVariableStored;

    VariableKind GetKind() const override { return VariableRemote; }
    int GetValue(CVal& out, ValueKind kind, int mode) override;
    int SetValue(const CVal& written, ValueKind kind) override;
    int SetLocked(bool flag) override;
    int SetIgnoreUnknown(bool flag) override;
    int IsReady(ValueKind kind) override { return kind == readyKind ? 1 : 0; }
    int IsReportLoaded(ValueKind kind) override { return kind == loadedKind ? 1 : 0; }
    int IsReportInited(ValueKind kind) override { return kind == initedKind ? 1 : 0; }
    int IsArchived() override { return 1; }
    std::string GetUnit() override;
    std::string GetDescription() override;

    CVal value;
    ReadResult answer = ReadValue;
    ValueKind readyKind = KindNone;
    ValueKind loadedKind = KindNone;
    ValueKind initedKind = KindNone;
    bool locked = false;
    bool ignoreUnknown = false;
};

}  // namespace kalvex
