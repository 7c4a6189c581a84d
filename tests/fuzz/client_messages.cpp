#include "fuzz/client_messages.h"

#include <cmath>
#include <limits>

#include "support/value_dump.h"
#include "text/CodePage.h"

namespace kalvex {

namespace {

constexpr std::int64_t kNoon = 1710068400;

}  // namespace

std::vector<ClientMessage> SampleClientMessages() {
    const std::string name = FromUtf8("Z1.PRZEPŁYW");
    std::vector<CVal> values;
    for (int index = 0; index < 5; ++index)
        values.push_back(Stamped(CVal(index), kNoon + index, Status::Supervisory));
    std::vector<CVal> mixed{CVal(std::string("x")), CVal(), CVal(1.5), CVal(2)};
    std::int64_t time = kNoon;
    for (CVal& value : mixed) value.SetTime(++time);
    return {
        LoginRequest{1, 23, "Kalvex_stacja", "", ""},
        LoginRequest{1, 23, "Kalvex_stacja", "NOBODY", ""},
        LoginRequest{2, 0, "", "jan", "tajne"},
        SubscribeRequest{{{1, name}, {2, "TEKST"}, {3, "BRAK"}, {4, "TAJNE"}}, {}, 577, true},
        SubscribeRequest{{{5, "LICZNIK"}}, {1, 9}, 833, false},
        ReadRequests{{{1, KindHour, name, kNoon, kNoon}, {2, KindArchive, name, 0, kNoon * 2}}},
        ReadRequests{{{3, KindDay, name, kNoon, kNoon}, {4, KindSpan, "BRAK", 5, 4}}},
        CancelRequests{{1, 2, 77}},
        ModifyRequests{{{5, KindCurrent, name, 0, CVal(12.5)},
                        {6, KindCurrent, "TEKST", 0, CVal(FromUtf8("Zażółć"))},
                        {7, KindHour, name, kNoon, CVal(std::nan(""))},
                        {8, KindMonth, name, -1, CVal(std::numeric_limits<double>::max())}}},
        ArchiveModifyRequest{9, name, kNoon, kNoon + 4, values},
        ArchiveModifyRequest{10, name, kNoon + 1, kNoon + 4, mixed},
        PeriodRequest{PeriodAction::Init, KindHour, name, kNoon},
        PeriodRequest{PeriodAction::Calculate, KindMonth, name, kNoon},
        PeriodRequest{PeriodAction::Refresh, KindArchive, name, kNoon},
        LastMessagesRequest{3},
    };
}

}  // namespace kalvex
