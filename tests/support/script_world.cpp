#include "support/script_world.h"

namespace kalvex::support {

ScriptWorld::ScriptWorld()
    : paths(folder.Path()),
      services{{clock, log, translator, users, paths, language::Functions()},
               language::Statements(),
               questions,
               &sources} {
    users.account = "operator";
}

ScriptWorld::~ScriptWorld() {
    documents.clear();
}

void ScriptWorld::WriteFile(const std::string& name, std::string_view text) {
    std::string bytes;
    for (char c : text::FromUtf8(text)) {
        if (c == '\n') bytes += '\r';
        bytes += c;
    }
    folder.Put(name, bytes);
}

engine::CKalvexDoc& ScriptWorld::Open(std::string_view text, const std::string& name) {
    WriteFile(name, text);
    engine::CKalvexDoc& document =
        *documents.emplace_back(std::make_unique<engine::CKalvexDoc>(services));
    std::string error;
    EXPECT_TRUE(document.Open(name, error)) << error;
    ticks.Add(document);
    return document;
}

engine::CKalvexDoc& ScriptWorld::Run(std::string_view text, int count) {
    engine::CKalvexDoc& document = Open(text);
    document.Start();
    document.SetPriority(1);
    Tick(count);
    return document;
}

void ScriptWorld::Tick(int count) {
    for (int i = 0; i < count; ++i) ticks.RunTick();
}

std::string ScriptWorld::Error(const engine::CKalvexDoc& document) {
    std::string text = std::to_string(document.LastError().m_nErrorCode);
    if (const std::string_view about = document.LastError().m_strErrorText; !about.empty())
        text += " " + text::ToUtf8(about);
    return text;
}

std::string ScriptWorld::Value(engine::CKalvexDoc& document, std::string_view name,
                               value::ValueKind kind) {
    operands::CVariable* variable = document.Variables().Find(text::FromUtf8(name));
    if (variable == nullptr) return "missing";
    if (variable->GetKind() == operands::VariableList) {
        std::string text = "[";
        for (const value::CVal& element :
             static_cast<operands::CVariableList*>(variable)->Elements()) {
            if (text.size() > 1) text += ' ';
            text += text::ToUtf8(value::ValueToText(element));
        }
        return text + "]";
    }
    value::CVal value;
    if (variable->GetValue(value, kind, 1) == 0) return "unreadable";
    return std::to_string(value.GetType()) + ":" + text::ToUtf8(value::ValueToText(value));
}

std::vector<std::string> ScriptWorld::Log(int level) const {
    std::vector<std::string> lines;
    const std::string prefix = folder.Path() + "/";
    for (const auto& [lineLevel, text] : log.lines) {
        if (lineLevel > level) continue;
        lines.push_back(text.starts_with(prefix) ? text.substr(prefix.size()) : text);
    }
    return lines;
}

}  // namespace kalvex::support
