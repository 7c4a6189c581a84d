#include "fuzz/client_messages.h"

#include <cmath>
#include <limits>

#include "support/value_dump.h"
#include "text/CodePage.h"

namespace kalvex::fuzz {

namespace {

constexpr std::int64_t kNoon = 1710068400;

}  // namespace

std::vector<vantrel::ClientMessage> SampleClientMessages() {
    const std::string name = text::FromUtf8("Z1.PRZEPŁYW");
    std::vector<value::CVal> values;
    for (int index = 0; index < 5; ++index)
        values.push_back(
            support::Stamped(value::CVal(index), kNoon + index, value::Status::Supervisory));
    std::vector<value::CVal> mixed{value::CVal(std::string("x")), value::CVal(), value::CVal(1.5),
                                   value::CVal(2)};
    std::int64_t time = kNoon;
    for (value::CVal& value : mixed) value.SetTime(++time);
    return {
        vantrel::LoginRequest{1, 23, "Kalvex_stacja", "", ""},
        vantrel::LoginRequest{1, 23, "Kalvex_stacja", "NOBODY", ""},
        vantrel::LoginRequest{2, 0, "", "jan", "tajne"},
        vantrel::LoginRequest{1, 23, "Kalvex_stacja", "", "", "a1b2c3", "para", 1710068400, 0},
        vantrel::SubscribeRequest{
            {{1, name}, {2, "TEKST"}, {3, "BRAK"}, {4, "TAJNE"}}, {}, 577, true},
        vantrel::SubscribeRequest{{{5, "LICZNIK"}}, {1, 9}, 833, false},
        vantrel::ReadRequests{{{1, value::KindHour, name, kNoon, kNoon},
                               {2, value::KindArchive, name, 0, kNoon * 2}}},
        vantrel::ReadRequests{
            {{3, value::KindDay, name, kNoon, kNoon}, {4, value::KindSpan, "BRAK", 5, 4}}},
        vantrel::ReadRequests{{{18, value::KindArchive, name, 0, kNoon * 2, 8},
                               {19, value::KindHour, name, 0, kNoon * 2, 4294967295}}},
        vantrel::CancelRequests{{1, 2, 77}},
        vantrel::ModifyRequests{
            {{5, value::KindCurrent, name, 0, value::CVal(12.5)},
             {6, value::KindCurrent, "TEKST", 0, value::CVal(text::FromUtf8("Zażółć"))},
             {7, value::KindHour, name, kNoon, value::CVal(std::nan(""))},
             {8, value::KindMonth, name, -1, value::CVal(std::numeric_limits<double>::max())}}},
        vantrel::ArchiveModifyRequest{9, name, kNoon, kNoon + 4, values},
        vantrel::ArchiveModifyRequest{10, name, kNoon + 1, kNoon + 4, mixed},
        vantrel::ModifyRequests{{{11, value::KindCurrent, name, 0, value::CVal(12.5), 1},
                                 {12, value::KindHour, name, kNoon, value::CVal(13), 2},
                                 {13, value::KindHour, name, kNoon, value::CVal(13), 2},
                                 {14, value::KindDay, "BRAK", kNoon, value::CVal(13), 3}}},
        vantrel::ArchiveModifyRequest{15, name, kNoon, kNoon + 4, values, UINT64_MAX},
        vantrel::ArchiveModifyRequest{16, name, kNoon, kNoon + 4, values, UINT64_MAX},
        vantrel::PeriodRequest{vantrel::PeriodAction::Init, value::KindHour, name, kNoon},
        vantrel::PeriodRequest{vantrel::PeriodAction::Calculate, value::KindMonth, name, kNoon},
        vantrel::PeriodRequest{vantrel::PeriodAction::Refresh, value::KindArchive, name, kNoon},
        vantrel::PeriodRequest{vantrel::PeriodAction::Load, value::KindHour, name, kNoon, 17},
        vantrel::TakeTerm{1710068400},
        vantrel::AcknowledgeRequests{{{18, name}, {19, "BRAK", 4}}},
        vantrel::LastMessagesRequest{3},
    };
}

}  // namespace kalvex::fuzz
