// A profile: what is read of it and what is wrong with it, and that a change changes nothing else.
#include <algorithm>
#include <iterator>

#include "app/ProfileCheck.h"
#include "fuzz/fuzz.h"
#include "platform/IniText.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::fuzz {

namespace {

constexpr const char* kWhole =
    "; uwagi\r\n[Konfiguracja]\r\nNazwa = Stacja 1\r\nKatalog g\xB3\xF3wny=\"/srv \"\r\n\r\n"
    "[Autostart]\r\nProcedura0=a.kx\r\nProcedura1=b.kx\r\n[Zrodla]\r\nZrodlo0=Gaz,adam,x\r\n"
    "[Log]\r\nRodzaj=2\r\n[Serwer Gaz]\r\nAdres=127.0.0.1:4300\r\n[Okna]\r\nSzeroko\x9C"
    "ci kolumn=1,2,3\r\n";

constexpr const char* kPieces[] = {
    kWhole,
    "",
    "[a",
    "[a]\n=\n",
    "k=1\n[A]\n k =2",
    "\xEF\xBB\xBF[a]\r\nk='x'\r\n",
    "[a]\nk=\"",
    "[]\r\n#\r\n;",
    "[Log]\rRodzaj=9\n",
    "[Serwery]\nx=y=z\n",
    "[Autostart]\nProcedura01=\n",
};

constexpr const char* kSection = "Konfiguracja";
constexpr const char* kKey = "Nazwa";
constexpr const char* kValue = " nowa ";

void CheckChanges(std::string_view content) {
    platform::IniText text(content);
    Demand(text.GetContent() == content, "a text that nobody changes stays");
    const std::vector<platform::IniLine> before = text.GetLines();
    for (const platform::IniLine& line : before) {
        if (line.kind != platform::IniKind::Entry || line.section.empty()) continue;
        Demand(text.Get(line.section, line.key).has_value(), "an entry is found");
        Demand(text.FindLine(line.section, line.key) > 0, "an entry has a line");
    }
    Demand(text.Set(kSection, kKey, kValue), "a value can be set");
    Demand(text.Get(kSection, kKey) == kValue, "a value that was set is there");
    text.Remove(kSection, kKey);
    const std::string removed = text.GetContent();
    Demand(platform::IniText(removed).GetContent() == removed, "a changed text stays");
    Demand(text.SetSection(kSection, {{"A", "1"}, {"B", ""}}), "a section can be set");
    Demand(text.Get(kSection, "A") == "1" && text.Get(kSection, "B") == "",
           "a section that was set is there");
    for (const auto& [key, value] : text.GetSection(kSection)) {
        Demand(text::EqualNoCase(key, "A") || text::EqualNoCase(key, "B"),
               "a section that was set has nothing else");
    }
    text.RemoveSection(kSection);
    Demand(text.GetSection(kSection).empty(), "a section that was removed is gone");
}

}  // namespace

std::vector<std::string> FuzzCorpus() {
    return {std::begin(kPieces), std::end(kPieces)};
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kalvex::support::ScratchFolder folder;
    static const kalvex::platform::Translator translator;
    const std::string_view content = kalvex::fuzz::Bytes(data, size);
    const std::string path = folder.Put("Kalvex.ini", content);
    for (const std::string& fault :
         kalvex::app::FindProfileFaults(path, kalvex::app::ModuleKeys(), translator)) {
        kalvex::fuzz::Demand(fault.starts_with("Plik " + path + ", "), "a fault has a place");
        kalvex::fuzz::Demand(kalvex::text::IsUtf8(fault), "a fault is UTF-8");
    }
    if (!kalvex::platform::IniText::IsBinary(content)) kalvex::fuzz::CheckChanges(content);
    return 0;
}
