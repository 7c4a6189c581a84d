// Faults to be found: an input that ends the process, and one that has no end.
#include "fuzz/fuzz.h"

namespace kalvex::fuzz {

std::vector<std::string> FuzzCorpus() {
    return {"abcd"};
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = kalvex::fuzz::Bytes(data, size);
    kalvex::fuzz::Demand(!input.starts_with("fault"), "a fault");
    if (input.starts_with("no end")) {
        for (volatile bool goOn = true; goOn;) {
        }
    }
    return 0;
}
