#include "support/source_world.h"

#include <algorithm>

#include "support/scratch_file.h"
#include "support/value_dump.h"
#include "value/LocalTimeText.h"

namespace kalvex::support {

namespace {

std::string Describe(const vantrel::JournalEntry& entry) {
    std::string text = entry.operation;
    if (entry.variable) text += " " + text::ToUtf8(*entry.variable);
    if (entry.from) text += " " + value::FormatLocalTime(*entry.from);
    if (entry.to && entry.to != entry.from) text += " - " + value::FormatLocalTime(*entry.to);
    if (entry.time) text += " " + value::FormatLocalTime(*entry.time);
    if (entry.value) text += " " + support::Describe(*entry.value);
    if (entry.list.value_or(false)) text += " into a list";
    if (entry.points) text += " in " + std::to_string(*entry.points) + " points";
    for (const value::CVal& value : entry.values.value_or(std::vector<value::CVal>())) {
        text += " " + support::Describe(value);
    }
    return text;
}

}  // namespace

SourceWorld::SourceWorld() {
    Plant("");
}

void SourceWorld::Plant(std::string_view content) {
    std::string text = "{\"sources\": {\"srv\": {" + std::string(content) + "}}}";
    std::replace(text.begin(), text.end(), '\'', '"');
    const ScratchFile file(text);
    vantrel::PlantDefinition definition;
    std::string fault;
    ASSERT_TRUE(vantrel::ReadPlant(file.Path(), definition, fault)) << fault;
    client.reset();
    plant = std::make_unique<vantrel::SimulatedPlant>(std::move(definition), clock);
    client = std::make_unique<sources::CClientInterface>(
        sources::SourceServices{log, translator, users, *plant, &journal});
    services.sources = client.get();
}

engine::CKalvexDoc& SourceWorld::Start(std::string_view text, const std::string& name) {
    engine::CKalvexDoc& document = Open(text, name);
    document.Start();
    document.SetPriority(1);
    return document;
}

engine::CKalvexDoc& SourceWorld::Run(std::string_view text, int count) {
    engine::CKalvexDoc& document = Start(text);
    Tick(count);
    return document;
}

void SourceWorld::Tick(int count) {
    for (int i = 0; i < count; ++i) {
        journal.SetTick(++tick);
        plant->AdvanceTo(tick);
        ScriptWorld::Tick(1);
    }
}

sources::CInterfaceObj& SourceWorld::Link(engine::CKalvexDoc& document, std::string_view name) {
    return *document.Variables().Find(name)->GetSourceRecord();
}

std::string SourceWorld::Stored(engine::CKalvexDoc& document, std::string_view name,
                                value::ValueKind kind) {
    value::CVal value;
    document.Variables().Find(name)->GetValue(value, kind, 1);
    return Describe(value);
}

sources::CInterfaceClientConnection& SourceWorld::Connection(std::string_view source) {
    return *client->FindConnection(source);
}

std::vector<std::string> SourceWorld::Calls(std::string_view part) {
    std::vector<std::string> calls;
    const auto rows = journal.Rows(Connection());
    for (; m_callsSeen < rows.size(); ++m_callsSeen) {
        const vantrel::JournalEntry& entry = rows[m_callsSeen].entry;
        if (entry.operation.find(part) != std::string::npos) calls.push_back(Describe(entry));
    }
    return calls;
}

std::vector<std::string> SourceWorld::NewLog(int level) {
    std::vector<std::string> lines;
    const std::string prefix = folder.Path() + "/";
    for (; m_linesSeen < log.lines.size(); ++m_linesSeen) {
        const auto& [lineLevel, text] = log.lines[m_linesSeen];
        if (lineLevel > level || text.ends_with(" skryptu ")) continue;
        lines.push_back(text.starts_with(prefix) ? text.substr(prefix.size()) : text);
    }
    return lines;
}

std::int64_t SourceWorld::Local(std::string_view text) {
    return value::ParseLocalTime(text).value();
}

}  // namespace kalvex::support
