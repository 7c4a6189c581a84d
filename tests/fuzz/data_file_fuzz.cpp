// A variable data file: its first line names the section that is written, the rest is the text.
#include <algorithm>

#include "fuzz/fuzz.h"
#include "host/DataFile.h"

namespace kalvex::fuzz {

namespace {

constexpr const char* kTexts[] = {
    "",
    "\nA:1\r\nB:2\r\n",
    "Noc\n[Noc]\r\nA:1\r\nB: x:y \r\n[Dzie\xF1]\r\nA:2\r\n",
    "Noc\n[1]\nA:1\n[2]\nA:2\n; uwaga\n",
    "\n[7]\r\nA:1\r\n[x]",
    "x\n[x\r\n[]\r\n[ x ]\r\n:\r\n::\r\nA\r\n A :\r\n",
    "Noc\r\n[99999999999999999999]\r\nA:1\r\n\r\n",
};

void CheckRewriting(std::string_view text, std::string_view section) {
    const host::DataEntry entries[] = {{"A", "A:nowa"}, {"B", std::nullopt}, {"C", "C:7"}};
    const host::RewrittenData rewritten = host::RewriteData(text, section, entries);
    bool found = false;
    host::ReadDataLines(rewritten.text, "",
                        [&found](std::string_view name, std::string_view value) {
                            found = found || (name == "A" && value == "nowa");
                        });
    Demand(found, "what was written is there");
    const host::RewrittenData again = host::RewriteData(rewritten.text, section, entries);
    Demand(section.empty() || again.text == rewritten.text, "what is written twice stays");
}

}  // namespace

std::vector<std::string> FuzzCorpus() {
    return {std::begin(kTexts), std::end(kTexts)};
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = kalvex::fuzz::Bytes(data, size);
    const std::string_view section = input.substr(0, input.find('\n'));
    const std::string_view text = input.substr(std::min(section.size() + 1, input.size()));
    for (const std::string_view wanted : {std::string_view(), section}) {
        kalvex::host::ReadDataLines(
            text, wanted, [](std::string_view name, std::string_view value) {
                kalvex::fuzz::Demand(name.find(':') == std::string_view::npos,
                                     "a name has no colon");
                kalvex::fuzz::Demand(value.find('\n') == std::string_view::npos,
                                     "a value is one line");
            });
    }
    kalvex::fuzz::CheckRewriting(text, "");
    kalvex::fuzz::CheckRewriting(text, "Noc");
    return 0;
}
