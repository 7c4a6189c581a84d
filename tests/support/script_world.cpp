#include "support/script_world.h"

namespace kalvex {

ScriptWorld::ScriptWorld()
    : paths(folder.Path()),
      services{
          {clock, log, translator, users, paths, Functions()}, Statements(), questions, &sources} {
    users.account = "operator";
}

ScriptWorld::~ScriptWorld() {
    documents.clear();
}

void ScriptWorld::WriteFile(const std::string& name, std::string_view text) {
    std::string bytes;
    for (char c : FromUtf8(text)) {
        if (c == '\n') bytes += '\r';
        bytes += c;
    }
    folder.Put(name, bytes);
}

CKalvexDoc& ScriptWorld::Open(std::string_view text, const std::string& name) {
    WriteFile(name, text);
    CKalvexDoc& document = *documents.emplace_back(std::make_unique<CKalvexDoc>(services));
    std::string error;
    EXPECT_TRUE(document.Open(name, error)) << error;
    ticks.Add(document);
    return document;
}

CKalvexDoc& ScriptWorld::Run(std::string_view text, int count) {
    CKalvexDoc& document = Open(text);
    document.Start();
    document.SetPriority(1);
    Tick(count);
    return document;
}

void ScriptWorld::Tick(int count) {
    for (int i = 0; i < count; ++i) ticks.RunTick();
}

std::string ScriptWorld::Error(const CKalvexDoc& document) {
    std::string text = std::to_string(document.LastError().m_nErrorCode);
    if (!document.LastError().m_strErrorText.empty())
        text += " " + ToUtf8(document.LastError().m_strErrorText);
    return text;
}

std::string ScriptWorld::Value(CKalvexDoc& document, std::string_view name, ValueKind kind) {
    CVariable* variable = document.Variables().Find(FromUtf8(name));
    if (variable == nullptr) return "missing";
    if (variable->GetKind() == VariableList) {
        std::string text = "[";
        for (const CVal& element : static_cast<CVariableList*>(variable)->Elements()) {
            if (text.size() > 1) text += ' ';
            text += ToUtf8(ValueToText(element));
        }
        return text + "]";
    }
    CVal value;
    if (variable->GetValue(value, kind, 1) == 0) return "unreadable";
    return std::to_string(value.GetType()) + ":" + ToUtf8(ValueToText(value));
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

}  // namespace kalvex
