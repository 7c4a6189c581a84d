#include "programs/kalvex-run/TextResult.h"

#include <gtest/gtest.h>

#include "support/fake_script.h"
#include "support/zone_scope.h"

namespace kalvex::programs {
namespace {

TEST(TextResultTest, NoVariablesNoTable) {
    EXPECT_EQ(run::VariableTable(support::FakeScript().Variables()), "");
}

TEST(TextResultTest, TableIsAlignedByCharacters) {
    const support::ZoneScope zone("Europe/Warsaw");
    support::FakeScript script;
    value::CVal value(12.5);
    value.SetStatus(value::Status::Alarm | value::Status::SetByUser);
    value.SetTime(support::FakeScript::kStart);
    script.Local("ŻÓŁĆ", value);
    script.Local("A", value::CVal(text::FromUtf8("ą\tb"))).SetValue(value::CVal(3), value::KindDay);
    script.Local("PUSTA");
    script.Pointer("W", "ŻÓŁĆ");
    value::CVal locked(7);
    locked.SetStatus(value::Status::HardLock | 0x1000);
    operands::CVariableList& list = script.List("L");
    list.Add(locked);
    list.Add(value::CVal("x"));
    list.MoveFirst();
    EXPECT_EQ(run::VariableTable(script.Variables()),
              "NAME     KIND     VALUE                   STATUS             TIME\n"
              "ŻÓŁĆ     LOCAL    12.50                   ALARM SET_BY_USER  2024-03-10 07:00:00\n"
              "A        LOCAL    \"ą b\"\n"
              "  .DREP           3\n"
              "PUSTA    LOCAL    -\n"
              "W        POINTER  -> ŻÓŁĆ\n"
              "L        LIST     2 elements, iterator 0\n"
              "  [0]             7                       LOCK 4096\n"
              "  [1]             \"x\"\n");
}

}  // namespace
}  // namespace kalvex::programs
