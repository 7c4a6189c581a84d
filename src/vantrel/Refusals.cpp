#include "vantrel/Refusals.h"

#include "text/TextFormat.h"

namespace kalvex::vantrel {

namespace {

constexpr std::size_t kMostAddresses = 1000;
constexpr const char* kOthers = "*";  // when the addresses are more

constexpr const char* kLeftOut =
    platform::Translatable("Odmowy klientom z %s, których nie ma w logu: %d");
constexpr const char* kLeftOutHere =
    platform::Translatable("Odmowy klientom na tym komputerze, których nie ma w logu: %d");

}  // namespace

bool Refusals::MayLog(const std::string& address, std::int64_t now) {
    const bool isNew = m_rows.count(address) == 0;
    const std::string key = isNew && m_rows.size() >= kMostAddresses ? kOthers : address;
    const auto [row, inserted] = m_rows.try_emplace(key, Row{now, 0});
    if (inserted) return true;
    if (row->second.logged != now && row->second.leftOut == 0) {
        row->second.logged = now;
        return true;
    }
    ++row->second.leftOut;
    return false;
}

std::vector<Refusals::LeftOut> Refusals::TakeLeftOut(std::int64_t now) {
    std::vector<LeftOut> leftOut;
    for (auto& [address, row] : m_rows) {
        if (row.logged == now || row.leftOut == 0) continue;
        leftOut.push_back({address, row.leftOut});
        row = {now, 0};
    }
    std::erase_if(m_rows, [now](const auto& entry) { return entry.second.logged != now; });
    return leftOut;
}

std::string LeftOutLine(const Refusals::LeftOut& leftOut, const platform::Translator& translator) {
    const std::string count = std::to_string(leftOut.refusals);
    if (leftOut.address.empty()) {
        return text::FormatText(translator.Translate(kLeftOutHere), {count});
    }
    return text::FormatText(translator.Translate(kLeftOut), {leftOut.address, count});
}

}  // namespace kalvex::vantrel
