// What a server decodes.
#include "fuzz/client_messages.h"
#include "fuzz/parcels.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kalvex::fuzz::CheckParcel<kalvex::vantrel::ClientParcel>(kalvex::fuzz::Bytes(data, size));
    return 0;
}

std::vector<std::string> kalvex::fuzz::FuzzCorpus() {
    std::vector<std::string> corpus{"", vantrel::Pack(vantrel::Heartbeat{}),
                                    vantrel::Pack(vantrel::Farewell{4106})};
    for (const vantrel::ClientMessage& message : SampleClientMessages()) {
        for (std::string& parcel : vantrel::Pack(message).parcels)
            corpus.push_back(std::move(parcel));
    }
    return corpus;
}
