#include "support/host_world.h"

namespace kalvex::support {

std::string HostWorld::Run(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += (text.empty() ? "" : "\n") + line;
    const engine::CKalvexDoc& script = ScriptWorld::Run(text, static_cast<int>(lines.size()) + 1);
    if (script.State().m_nCurrentLine == script.GetLineCount()) return "done";
    return std::to_string(script.State().m_nCurrentLine + 1) + ": " + Error(script);
}

std::string HostWorld::Text(std::string_view name) {
    const std::string typed = Typed(name);
    return typed.substr(typed.find(':') + 1);
}

void HostWorld::Put(const std::string& name, std::string_view text) {
    folder.Put(name, text::FromUtf8(text));
}

std::string HostWorld::Get(const std::string& name) const {
    std::string content;
    std::string error;
    return platform::ReadWholeFile(PathOf(name), content, error) ? text::ToUtf8(content) : error;
}

}  // namespace kalvex::support
