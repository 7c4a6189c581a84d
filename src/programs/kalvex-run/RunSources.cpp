#include "programs/kalvex-run/RunSources.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "programs/kalvex-run/JsonResult.h"
#include "programs/kalvex-run/ServerPlant.h"
#include "text/CodePage.h"

namespace kalvex::run {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kRequestStates[] = {"none", "waiting", "ready", "failed"};

constexpr const char* kNoServers =
    "give --plant FILE for servers that are simulated, or --profile FILE for those that run";

bool ReadPlantOf(const std::string& path, const platform::Translator& translator,
                 vantrel::PlantDefinition& plant, std::string& fault) {
    return IsServerConfiguration(path) ? ReadServerPlant(path, translator, plant, fault)
                                       : vantrel::ReadPlant(path, plant, fault);
}

Json CellsJson(const std::vector<value::CVal>& values) {
    Json cells = Json::array();
    for (const value::CVal& value : values) cells.push_back(CellJson(value));
    return cells;
}

Json RequestJson(const vantrel::TickJournal::Row& row) {
    const vantrel::JournalEntry& entry = row.entry;
    Json record = {{"tick", row.tick}, {"op", entry.operation}};
    if (entry.variable) record["variable"] = text::ToUtf8(*entry.variable);
    if (entry.from) record["from"] = *entry.from;
    if (entry.to) record["to"] = *entry.to;
    if (entry.time) record["time"] = *entry.time;
    if (entry.id) record["id"] = *entry.id;
    if (entry.value) record["value"] = CellJson(*entry.value);
    if (entry.values) record["values"] = CellsJson(*entry.values);
    if (entry.list) record["list"] = *entry.list;
    return record;
}

}  // namespace

RunSources::RunSources(std::unique_ptr<RunCarrier> carrier, bool accounted,
                       const RunProfile& profile, platform::LogSink& log,
                       const platform::Translator& translator, const platform::Users& users)
    : m_carrier(std::move(carrier)),
      m_client({log, translator, users, m_carrier->Transports(), accounted ? &m_journal : nullptr,
                profile.sources, profile.crypt.get()}) {}

void RunSources::BeginTick(std::int64_t tick) {
    m_journal.SetTick(tick);
    m_carrier->BeginTick(tick, m_client.SourceList());
}

Json RunSources::SourceJson(const vantrel::CClientConnection* connection) const {
    Json requests = Json::array();
    if (connection != nullptr) {
        for (const vantrel::TickJournal::Row& row : m_journal.Rows(*connection)) {
            requests.push_back(RequestJson(row));
        }
    }
    const bool connected =
        connection != nullptr && connection->GetState() == vantrel::StateConnected;
    return {{"connected", connected}, {"requests", std::move(requests)}};
}

Json RunSources::Result() const {
    const sources::CInterfaceSourceList& list = m_client.SourceList();
    Json result = Json::object();
    for (const std::string& name : m_carrier->SourceNames()) {
        result[text::ToUtf8(name)] = SourceJson(list.Get(name));
    }
    for (const auto& connection : list.Connections()) {
        Json& source = result[text::ToUtf8(connection->GetServerName())];
        if (source.is_null()) source = SourceJson(connection.get());
    }
    return result;
}

void AddRemoteFields(sources::CInterfaceObj& link, Json& record) {
    record["source"] = text::ToUtf8(link.GetSource());
    record["variable"] = text::ToUtf8(link.GetVariable());
    Json& requests = record["requests"] = Json::object();
    for (const value::ValueKindRow& row : value::ValueKinds()) {
        if (row.kind == value::KindCurrent) continue;
        requests[std::string(row.suffix)] = kRequestStates[link.GetRequestState(row.kind)];
    }
    Json& archive = record["archive"] = Json::array();
    const value::CArchiveValueList& values = link.GetArchValues();
    for (std::size_t i = 0; i < values.GetSize(); ++i) archive.push_back(CellJson(*values.Get(i)));
    record["locked"] = link.IsLocked();
    record["ignoreUnknown"] = link.IsIgnoreUnknown();
}

std::unique_ptr<RunSources> MakeRunSources(const RunOptions& options, const RunProfile& profile,
                                           const platform::Clock& clock, platform::LogSink& log,
                                           const platform::Translator& translator,
                                           const platform::Users& users, std::string& fault) {
    std::unique_ptr<RunCarrier> carrier;
    if (options.profile && !options.plant) {
        carrier = std::make_unique<RunNetwork>(
            vantrel::NetworkClientSettings{.addresses = profile.servers}, log, translator);
    } else {
        vantrel::PlantDefinition plant;
        if (options.plant && !ReadPlantOf(*options.plant, translator, plant, fault)) return nullptr;
        carrier = std::make_unique<RunPlant>(
            std::move(plant), clock,
            options.plant ? *options.plant + " does not have it" : kNoServers);
    }
    return std::make_unique<RunSources>(std::move(carrier), options.json, profile, log, translator,
                                        users);
}

}  // namespace kalvex::run
