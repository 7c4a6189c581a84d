// What a client decodes.
#include "fuzz/parcels.h"
#include "text/CodePage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kalvex::CheckParcel<kalvex::ServerParcel>(kalvex::Bytes(data, size));
    return 0;
}

std::vector<std::string> kalvex::FuzzCorpus() {
    const std::string words = FromUtf8("zażółć gęślą jaźń");
    const std::vector<CVal> values{CVal(1), CVal(2.5), CVal(words), CVal()};
    const std::vector<ServerMessage> messages{
        LoginResult{0, ""},
        LoginResult{2, words},
        VariableDefinitions{{{"A", {{"un", "m3/h"}, {"de", words}}}, {"B", {}}}, true},
        VariableDefinitions{{}, false},
        ValueUpdates{{{1, CVal(1)}, {2, CVal(2.5)}, {3, CVal(words)}, {4, CVal()}}, true},
        ValueUpdates{{}, true},
        AccessErrors{{{1, 0}, {2, 2}}},
        ReadAnswer{7, 0, values, true},
        ReadAnswer{8, 1, {}, true},
        ReadAnswer{9, 0, values, false},
        ModifyResults{{{1, 0}, {2, 5}}},
        ReportChange{KindDay, 1710025200},
        LogMessage{2, 1710025200, words},
    };
    std::vector<std::string> corpus{"", Pack(Heartbeat{}), Pack(Farewell{4107}), Pack(Greeting{1})};
    for (const ServerMessage& message : messages) {
        for (std::string& parcel : Pack(message).parcels) corpus.push_back(std::move(parcel));
    }
    return corpus;
}
