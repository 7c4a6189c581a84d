#include "programs/kalvex-run/JsonResult.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "programs/ShownValues.h"
#include "text/CodePage.h"
#include "value/Status.h"
#include "value/ValueText.h"

namespace kalvex::run {

namespace {

using Json = nlohmann::ordered_json;

Json SlotsJson(operands::CVariable& variable) {
    Json slots = Json::object();
    for (const value::ValueKindRow& row : value::ValueKinds()) {
        if (row.kind == value::KindArchive) continue;
        slots[std::string(row.suffix)] = CellJson(StoredValue(variable, row.kind));
    }
    return slots;
}

using AddFields = void (*)(operands::CVariable&, Json&);

struct KindRow {
    operands::VariableKind kind;
    const char* name;
    AddFields addFields;
};

void AddSlots(operands::CVariable& variable, Json& record) {
    record["slots"] = SlotsJson(variable);
}

void AddTarget(operands::CVariable& variable, Json& record) {
    record["target"] =
        text::ToUtf8(static_cast<operands::CVariablePointer&>(variable).GetTargetName());
}

void AddElements(operands::CVariable& variable, Json& record) {
    const auto& list = static_cast<const operands::CVariableList&>(variable);
    record["iterator"] = list.GetIterator();
    Json& elements = record["elements"] = Json::array();
    for (const value::CVal& element : list.Elements()) elements.push_back(CellJson(element));
}

void AddRemote(operands::CVariable& variable, Json& record) {
    AddSlots(variable, record);
    AddRemoteFields(*variable.GetSourceRecord(), record);
}

constexpr KindRow kKinds[] = {{operands::VariableLocal, "LOCAL", AddSlots},
                              {operands::VariablePointer, "POINTER", AddTarget},
                              {operands::VariableList, "LIST", AddElements},
                              {operands::VariableRemote, "REMOTE", AddRemote}};

Json WaitLinesJson(const engine::CKalvexDoc& document) {
    Json lines = Json::array();
    for (const auto& [key, record] : document.State().m_mapWaitFor) lines.push_back(record.nLine);
    return lines;
}

Json TextJson(const engine::ScriptText& text) {
    Json lines = Json::array();
    for (int n = 0; n < text.GetLineCount(); ++n) lines.push_back(text::ToUtf8(text.GetLine(n)));
    return lines;
}

Json ScriptJson(const RunScript& script, bool lines) {
    const engine::CKalvexDoc& document = script.Document();
    const engine::RunState& state = document.State();
    const operands::ErrorSlot& error = document.LastError();
    Json record = {{"path", text::ToUtf8(document.GetPathName())},
                   {"started", script.IsStarted()},
                   {"running", state.m_bRunning},
                   {"paused", state.m_bPaused},
                   {"stepRequested", state.m_bStepRequested},
                   {"minimised", state.m_bMinimised},
                   {"finished", script.IsFinished()},
                   {"errorStanding", state.m_bErrorStanding},
                   {"currentLine", state.m_nCurrentLine},
                   {"lineCount", document.GetLineCount()},
                   {"priority", state.m_nPriority},
                   {"errorCode", error.m_nErrorCode},
                   {"errorText", text::ToUtf8(error.m_strErrorText)},
                   {"errorMessage", text::ToUtf8(document.GetErrorMessage(error.m_nErrorCode))},
                   {"ignoreUnknown", state.m_bIgnoreUnknown},
                   {"callDepth", state.m_lstCallStack.size()},
                   {"waitLines", WaitLinesJson(document)}};
    Json& variables = record["variables"] = Json::array();
    for (const std::unique_ptr<operands::CVariable>& variable : document.Variables()) {
        variables.push_back(VariableJson(*variable));
    }
    if (lines) record["lines"] = TextJson(document.Text());
    return record;
}

}  // namespace

Json CellJson(const value::CVal& value) {
    return {{"type", value.GetType()},
            {"status", value.GetStatus()},
            {"time", value.GetTime()},
            {"value", programs::JsonContent(value)},
            {"text", text::ToUtf8(value::ValueToText(value))}};
}

Json VariableJson(operands::CVariable& variable) {
    const KindRow& row = *std::ranges::find(kKinds, variable.GetKind(), &KindRow::kind);
    Json record = {{"name", text::ToUtf8(variable.GetName())}, {"kind", row.name}};
    row.addFields(variable, record);
    return record;
}

std::string JsonResult(const Runner& runner, bool lines) {
    Json log = Json::array();
    for (const LogEntry& entry : runner.Log().Entries()) {
        log.push_back({{"time", entry.time}, {"level", entry.level}, {"text", entry.text}});
    }
    Json scripts = Json::array();
    for (const std::unique_ptr<RunScript>& script : runner.Scripts()) {
        scripts.push_back(ScriptJson(*script, lines));
    }
    const Json result = {{"ticks", runner.GetTicks()},
                         {"now", runner.GetClock().Now()},
                         {"log", std::move(log)},
                         {"scripts", std::move(scripts)},
                         {"sources", runner.Sources().Result()}};
    return result.dump() + '\n';
}

}  // namespace kalvex::run
