// What a client decodes.
#include "fuzz/parcels.h"
#include "text/CodePage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kalvex::fuzz::CheckParcel<kalvex::vantrel::ServerParcel>(kalvex::fuzz::Bytes(data, size));
    return 0;
}

std::vector<std::string> kalvex::fuzz::FuzzCorpus() {
    const std::string words = text::FromUtf8("zażółć gęślą jaźń");
    const std::vector<value::CVal> values{value::CVal(1), value::CVal(2.5), value::CVal(words),
                                          value::CVal()};
    const std::vector<vantrel::ServerMessage> messages{
        vantrel::LoginResult{0, ""},
        vantrel::LoginResult{2, words},
        vantrel::LoginResult{0, "", 1234567},
        vantrel::VariableDefinitions{{{"A", {{"un", "m3/h"}, {"de", words}}}, {"B", {}}}, true},
        vantrel::VariableDefinitions{{}, false},
        vantrel::ValueUpdates{{{1, value::CVal(1)},
                               {2, value::CVal(2.5)},
                               {3, value::CVal(words)},
                               {4, value::CVal()}},
                              true},
        vantrel::ValueUpdates{{}, true},
        vantrel::AccessErrors{{{1, 0}, {2, 2}}},
        vantrel::ReadAnswer{7, 0, values, true},
        vantrel::ReadAnswer{8, 1, {}, true},
        vantrel::ReadAnswer{9, 0, values, false},
        vantrel::ModifyResults{{{1, 0}, {2, 5}}},
        vantrel::ReportChange{value::KindDay, 1710025200},
        vantrel::ReportChange{value::KindHour, 1710025200, 1234567},
        vantrel::TermResult{1, 1710068400},
        vantrel::LogMessage{2, 1710025200, words},
    };
    std::vector<std::string> corpus{"",
                                    vantrel::Pack(vantrel::Heartbeat{}),
                                    vantrel::Pack(vantrel::Farewell{4107}),
                                    vantrel::Pack(vantrel::Greeting{1}),
                                    vantrel::Pack(vantrel::Greeting{1, "Gaz", "db1", 1710068400}),
                                    vantrel::Pack(vantrel::Farewell{4109, {"db2:4300"}})};
    for (const vantrel::ServerMessage& message : messages) {
        for (std::string& parcel : vantrel::Pack(message).parcels)
            corpus.push_back(std::move(parcel));
    }
    return corpus;
}
