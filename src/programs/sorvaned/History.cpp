#include "programs/sorvaned/History.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "programs/ShownValues.h"
#include "server/ReportPeriods.h"
#include "server/StoreReader.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"

namespace kalvex::sorvaned {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kNoVariable = platform::Translatable("%s: nie ma takiej zmiennej");
constexpr const char* kNothing = "-";

std::string TimeText(const std::optional<std::int64_t>& time) {
    return time ? value::FormatLocalTime(*time) : kNothing;
}

std::string OrNothing(const std::string& text) {
    return text.empty() ? kNothing : programs::ShownText(text);
}

std::string LineOf(const server::ValueVersion& version) {
    const server::Writer writer = version.writer.value_or(server::Writer());
    std::string line(value::WordOfKind(version.kind));
    for (const std::string& field :
         {TimeText(version.value.GetTime()), TimeText(version.written), OrNothing(writer.user),
          OrNothing(writer.client), OrNothing(writer.address),
          programs::ShownContent(version.value),
          OrNothing(programs::ShownStatus(version.value.GetStatus()))}) {
        line += '\t' + field;
    }
    return line;
}

Json JsonOf(const server::ValueVersion& version) {
    Json writer;
    if (version.writer) {
        writer = {{"user", text::ToUtf8(version.writer->user)},
                  {"client", text::ToUtf8(version.writer->client)},
                  {"address", version.writer->address}};
    }
    return {{"kind", value::WordOfKind(version.kind)},
            {"time", version.value.GetTime()},
            {"value", programs::JsonContent(version.value)},
            {"status", version.value.GetStatus()},
            {"written", version.written ? Json(*version.written) : Json()},
            {"writer", std::move(writer)}};
}

// The current value, or what counts at a time: archive value and reports.
std::vector<std::vector<server::ValueVersion>> Gather(server::StoreReader& reader,
                                                      server::VariableId variable,
                                                      std::optional<std::int64_t> at,
                                                      int dayStart) {
    if (!at) return {reader.CurrentVersions(variable)};
    std::vector<std::vector<server::ValueVersion>> all;
    for (const value::ValueKind kind : {value::KindHour, value::KindDay, value::KindMonth}) {
        const std::int64_t report = server::CoveringReport(kind, *at, dayStart);
        all.push_back(reader.Versions({variable, kind, report}));
    }
    all.push_back(reader.Versions({variable, value::KindSpan, *at}));
    if (const auto time = reader.ArchiveTimeAt(variable, *at)) {
        all.push_back(reader.Versions({variable, value::KindArchive, *time}));
    }
    return all;
}

}  // namespace

int ShowHistory(const server::Definitions& definitions, const SorvanedOptions& options,
                const platform::Translator& translator) {
    const auto fail = [](const std::string& line) {
        std::cerr << line << '\n';
        return programs::ExitFailed;
    };
    server::StoreReader reader;
    platform::Notice fault;
    const std::string path = server::StorePath(definitions);
    if (!reader.Open(path, fault)) return fail(platform::InWords(fault, translator));
    const std::optional<server::VariableId> variable =
        reader.Find(text::FromUtf8(options.variable));
    if (!variable && reader.Fault().empty()) {
        return fail(platform::InWords({kNoVariable, {options.variable}}, translator));
    }
    std::string lines;
    if (variable) {
        const int dayStart = static_cast<int>(definitions.dayStart);
        for (auto& versions : Gather(reader, *variable, options.at, dayStart)) {
            if (!options.versions && versions.size() > 1) versions.resize(1);
            for (const server::ValueVersion& version : versions) {
                lines += (options.json ? JsonOf(version).dump() : LineOf(version)) + '\n';
            }
        }
    }
    if (!reader.Fault().empty()) return fail(path + ": " + reader.Fault());
    std::cout << lines;
    return programs::ExitDone;
}

}  // namespace kalvex::sorvaned
