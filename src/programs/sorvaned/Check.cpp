#include "programs/sorvaned/Check.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <set>

#include "programs/ShownValues.h"
#include "programs/sorvaned/Printer.h"
#include "server/StoreCheck.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"

namespace kalvex::sorvaned {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kSound = platform::Translatable(
    "%s: bez błędów; zmiennych %d, wartości archiwalnych %d, raportów %d, wersji %d, bajtów %d, "
    "przerw %d");

struct Row {
    const std::string& name;
    const server::VariableShare& share;
    bool withGaps;  // they have been looked for
};

std::string TabLine(const Row& row) {
    const server::VariableShare& share = row.share;
    std::string line = programs::ShownText(row.name);
    for (const std::int64_t number : {share.archive, share.reports, share.versions, share.bytes}) {
        line += '\t' + std::to_string(number);
    }
    line += '\t' + (row.withGaps ? std::to_string(share.gaps) : "-");
    if (share.gaps == 0) return line + "\t-\t-\n";
    return line + '\t' + value::FormatExactLocalTime(share.longest.begin) + '\t' +
           value::FormatExactLocalTime(share.longest.end) + '\n';
}

std::string JsonLine(const Row& row) {
    const server::VariableShare& share = row.share;
    Json longest;
    if (share.gaps != 0) longest = {{"from", share.longest.begin}, {"to", share.longest.end}};
    const Json object = {{"variable", text::ToUtf8(row.name)},
                         {"archive", share.archive},
                         {"reports", share.reports},
                         {"versions", share.versions},
                         {"bytes", share.bytes},
                         {"gaps", row.withGaps ? Json(share.gaps) : Json()},
                         {"longest", std::move(longest)}};
    return object.dump() + '\n';
}

void Add(const server::VariableShare& share, server::VariableShare& sum) {
    sum.archive += share.archive;
    sum.reports += share.reports;
    sum.versions += share.versions;
    sum.bytes += share.bytes;
    sum.gaps += share.gaps;
}

std::string Summary(const std::string& path, std::size_t variables,
                    const server::VariableShare& sum, bool json,
                    const platform::Translator& translator) {
    if (json) {
        const Json object = {
            {"store", path},          {"variables", variables},   {"archive", sum.archive},
            {"reports", sum.reports}, {"versions", sum.versions}, {"bytes", sum.bytes},
            {"gaps", sum.gaps}};
        return object.dump() + '\n';
    }
    const auto text = [](auto number) { return std::to_string(number); };
    return platform::InWords({kSound,
                              {path, text(variables), text(sum.archive), text(sum.reports),
                               text(sum.versions), text(sum.bytes), text(sum.gaps)}},
                             translator) +
           '\n';
}

// The variables that the server takes samples of.
std::set<std::string> Sampled(const server::Definitions& definitions) {
    std::set<std::string> names;
    for (const server::VariableConfig& variable : definitions.variables) {
        if ((variable.archive & vantrel::ArchiveBit::Samples) != 0) names.insert(variable.name);
    }
    return names;
}

}  // namespace

int CheckStore(const server::Definitions& definitions, const SorvanedOptions& options,
               const platform::Translator& translator) {
    const std::string path = server::StorePath(definitions);
    const auto tell = [](const std::string& line) {
        std::cerr << line << '\n';
        return programs::ExitFailed;
    };
    server::StoreCheck check;
    platform::Notice fault;
    if (!check.Open(path, fault)) return tell(platform::InWords(fault, translator));
    const std::vector<platform::Notice> faults = check.Faults();
    for (const platform::Notice& one : faults) {
        tell(path + ": " + platform::InWords(one, translator));
    }
    if (!faults.empty()) return programs::ExitFailed;
    const std::set<std::string> sampled = Sampled(definitions);
    const std::map<std::string, server::VariableId> variables = check.Variables();
    server::VariableShare sum;
    Printer printer;
    for (const auto& [name, id] : variables) {
        if (!check.Failure().empty() || printer.IsClosed()) break;
        const bool withGaps = sampled.contains(name);
        const server::VariableShare share =
            check.ShareOf(id, withGaps ? std::optional(definitions.archivePeriod) : std::nullopt);
        Add(share, sum);
        const Row row{name, share, withGaps};
        printer.Put(options.json ? JsonLine(row) : TabLine(row));
    }
    if (check.Failure().empty()) {
        printer.Put(Summary(path, variables.size(), sum, options.json, translator));
    }
    const int status = printer.End(translator);
    return check.Failure().empty() ? status : tell(path + ": " + check.Failure());
}

}  // namespace kalvex::sorvaned
