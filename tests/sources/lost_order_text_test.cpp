// What the log has of writes and orders that never left.
#include "sources/LostOrderText.h"

#include <gtest/gtest.h>

#include "text/CodePage.h"
#include "value/LocalTime.h"

namespace kalvex::sources {
namespace {

TEST(LostOrderTextTest, TellsWhatTheScriptHadOrdered) {
    const platform::Translator translator;
    const std::int64_t time = value::MakeLocalTime({2024, 3, 10, 7});
    const auto text = [&](vantrel::LossReason reason, std::optional<vantrel::PeriodAction> action,
                          value::ValueKind kind, std::vector<value::CVal> values) {
        return text::ToUtf8(
            LostOrderText({reason, action, kind, "X", time, std::move(values)}, translator));
    };
    using vantrel::LossReason;
    using vantrel::PeriodAction;
    EXPECT_EQ(text(LossReason::NotConnected, {}, value::KindCurrent, {value::CVal(1.5)}),
              "Brak połączenia z serwerem, przepadło polecenie SET o wartości 1.50");
    EXPECT_EQ(text(LossReason::QueueFull, {}, value::KindHour, {value::CVal(7)}),
              "Zbyt wiele zapisów i poleceń czeka na odpowiedź serwera, przepadło polecenie PUT "
              "HREP 2024-03-10 07:00:00 o wartości 7");
    EXPECT_EQ(text(LossReason::QueueFull, {}, value::KindArchive, {value::CVal(7), value::CVal(8)}),
              "Zbyt wiele zapisów i poleceń czeka na odpowiedź serwera, przepadło polecenie MPUT "
              "ARCH 2024-03-10 07:00:00, wartości: 2");
    EXPECT_EQ(text(LossReason::NotConnected, PeriodAction::Calculate, value::KindDay, {}),
              "Brak połączenia z serwerem, przepadło polecenie INIT_CALC DREP 2024-03-10 07:00:00");
    EXPECT_EQ(text(LossReason::NotConnected, PeriodAction::Refresh, value::KindArchive, {}),
              "Brak połączenia z serwerem, przepadło polecenie INIT_LOAD_REFRESH ARCH 2024-03-10 "
              "07:00:00");
    EXPECT_EQ(text(LossReason::Unanswered, {}, value::KindCurrent, {value::CVal("2")}),
              "Połączenie zerwane przed odpowiedzią serwera, przepadło polecenie SET o wartości 2");
}

}  // namespace
}  // namespace kalvex::sources
