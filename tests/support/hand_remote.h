// A server variable whose answers are set by hand.
#pragma once

#include <string>

#include "operands/Variable.h"

namespace kalvex::support {

class HandRemote final : public operands::VariableStored {
  public:
    using operands::VariableStored::VariableStored;

    operands::VariableKind GetKind() const override { return operands::VariableRemote; }
    int GetValue(value::CVal& out, value::ValueKind kind, int mode) override;
    int SetValue(const value::CVal& written, value::ValueKind kind) override;
    int SetLocked(bool flag) override;
    int SetIgnoreUnknown(bool flag) override;
    int IsReady(value::ValueKind kind) override { return kind == readyKind ? 1 : 0; }
    int IsReportLoaded(value::ValueKind kind) override { return kind == loadedKind ? 1 : 0; }
    int IsReportInited(value::ValueKind kind) override { return kind == initedKind ? 1 : 0; }
    int IsArchived() override { return 1; }
    std::string GetUnit() override;
    std::string GetDescription() override;

    value::CVal value;
    operands::ReadResult answer = operands::ReadValue;
    value::ValueKind readyKind = value::KindNone;
    value::ValueKind loadedKind = value::KindNone;
    value::ValueKind initedKind = value::KindNone;
    bool locked = false;
    bool ignoreUnknown = false;
};

}  // namespace kalvex::support
