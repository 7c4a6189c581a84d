// A line of an audit trail, which anybody who may write the file can have put there.
#include "audit/AuditRecord.h"
#include "fuzz/fuzz.h"

namespace kalvex::fuzz {

std::vector<std::string> FuzzCorpus() {
    using audit::AuditAction;
    const std::vector<audit::AuditEntry> entries = {
        {1710025200, {AuditAction::Start, "a.kx", "adam", "", "Dyspozytor"}},
        {1710025201,
         {AuditAction::Value, "a.kx", "", "10.1.2.3", "x", "A", "1", "za\xBF\xF3\xB3\xE6\n"}},
        {-1, {AuditAction::Lost, "", "", "", "", "", {}, "12"}},
        {1710025202, {AuditAction::BreakpointSet, "b.kx", "ewa", "", "", "7"}},
    };
    std::vector<std::string> corpus{"", "{}", "{\"time\":1e99}", "[[[[]]]]", "{\"time\":\"x\"}"};
    for (const audit::AuditEntry& entry : entries) corpus.push_back(audit::AuditLine(entry));
    return corpus;
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view line = kalvex::fuzz::Bytes(data, size);
    if (line.ends_with('\n')) line.remove_suffix(1);
    kalvex::audit::AuditLineTime(line);
    const std::optional<kalvex::audit::AuditEntry> entry = kalvex::audit::ParseAuditLine(line);
    if (!entry) return 0;
    std::string again = kalvex::audit::AuditLine(*entry);
    again.pop_back();
    kalvex::fuzz::Demand(again.size() < kalvex::audit::kLongestAuditLine, "a line is bounded");
    kalvex::fuzz::Demand(again.find('\n') == std::string::npos, "a line is one");
    const std::optional<kalvex::audit::AuditEntry> read = kalvex::audit::ParseAuditLine(again);
    kalvex::fuzz::Demand(read.has_value(), "what was read can be written");
    kalvex::fuzz::Demand(read->time == entry->time, "a time stays");
    kalvex::fuzz::Demand(kalvex::audit::AuditLineTime(again) == entry->time, "a line has one time");
    return 0;
}
