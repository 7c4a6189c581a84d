#include "programs/sorvaned/Export.h"

#include <iostream>
#include <map>

#include "programs/sorvaned/Printer.h"
#include "programs/sorvaned/StoredRows.h"
#include "server/StoreReader.h"
#include "text/CodePage.h"
#include "text/PatternMatch.h"

namespace kalvex::sorvaned {

namespace {

constexpr const char* kNoVariable = platform::Translatable("%s: nie ma takiej zmiennej");
constexpr std::int64_t kValuesOfAPiece = 5000;
constexpr int kPattern = text::PatternOption::Wildcards | text::PatternOption::Whole;

using Variables = std::map<std::string, server::VariableId>;

// What the store has, and what is in the configuration and has nothing stored yet.
Variables AllVariables(server::StoreReader& reader, const server::Definitions& definitions) {
    Variables all = reader.Variables();
    for (const server::VariableConfig& variable : definitions.variables) {
        all.emplace(variable.name, 0);
    }
    return all;
}

// Those of which a name or a pattern speaks; the first one that speaks of none goes to `stranger`.
Variables Choose(const Variables& all, const std::vector<std::string>& names,
                 std::string& stranger) {
    Variables chosen;
    for (const std::string& name : names) {
        const std::string pattern = text::FromUtf8(name);
        bool any = false;
        for (const auto& variable : all) {
            if (!text::CompareWithPattern(variable.first, pattern, kPattern)) continue;
            chosen.insert(variable);
            any = true;
        }
        if (!any && stranger.empty()) stranger = name;
    }
    return chosen;
}

// False when it cannot be read, or nobody reads what is printed.
bool PrintVariable(server::StoreReader& reader, const Variables::value_type& variable,
                   const SorvanedOptions& options, Printer& printer) {
    const auto line = options.csv ? CsvLine : options.json ? JsonLine : TabLine;
    server::StoreQuery query{variable.second, options.kind, *options.from, *options.to,
                             kValuesOfAPiece};
    for (bool more = true; more && !printer.IsClosed();) {
        const server::StorePiece piece = reader.ReadRange(query);
        if (!piece.read) return false;
        for (const value::CVal& value : piece.values) {
            printer.Put(line({variable.first, options.kind, value}));
        }
        more = piece.more;
        if (more) query.from = piece.values.back().GetTime() + 1;
    }
    return !printer.IsClosed();
}

}  // namespace

int Export(const server::Definitions& definitions, const SorvanedOptions& options,
           const platform::Translator& translator) {
    const auto fail = [](const std::string& line) {
        std::cerr << line << '\n';
        return programs::ExitFailed;
    };
    server::StoreReader reader;
    platform::Notice fault;
    const std::string path = server::StorePath(definitions);
    if (!reader.Open(path, fault)) return fail(platform::InWords(fault, translator));
    std::string stranger;
    const Variables chosen = Choose(AllVariables(reader, definitions), options.names, stranger);
    if (!reader.Fault().empty()) return fail(path + ": " + reader.Fault());
    if (!stranger.empty()) return fail(platform::InWords({kNoVariable, {stranger}}, translator));
    Printer printer;
    if (options.csv) printer.Put(CsvHead());
    for (const auto& variable : chosen) {
        if (!PrintVariable(reader, variable, options, printer)) break;
    }
    const int status = printer.End(translator);
    return reader.Fault().empty() ? status : fail(path + ": " + reader.Fault());
}

}  // namespace kalvex::sorvaned
