#include "engine/script_lines.h"

#include <ctime>

namespace kalvex::engine {

namespace {

constexpr int kLineLimit = 1000;

}  // namespace

std::int64_t At(const char* reading, int hours) {
    std::tm fields{};
    strptime(reading, "%Y-%m-%d %H:%M:%S", &fields);
    return timegm(&fields) - hours * 3600;
}

ScriptLines::ScriptLines()
    : document(*documents.emplace_back(std::make_unique<CKalvexDoc>(services))) {}

void ScriptLines::Load(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += text::FromUtf8(line) + "\r\n";
    text.resize(text.size() - 2);
    document.Text().SetText(text);
    document.JumpTo(0);
    document.Resume();
}

bool ScriptLines::GoOn() {
    for (int count = 0; !Finished(); ++count) {
        if (count > kLineLimit) {
            ADD_FAILURE() << "the script does not end";
            return false;
        }
        const int line = document.State().m_nCurrentLine;
        if (!document.ExecuteLine()) return false;
        const bool waits = document.State().m_nCurrentLine == line;
        if (waits) return true;
    }
    return true;
}

bool ScriptLines::RunLines(const std::vector<std::string>& lines) {
    Load(lines);
    return GoOn();
}

std::string ScriptLines::Failure() const {
    return std::to_string(document.State().m_nCurrentLine + 1) + ": " + Error(document);
}

std::vector<std::string> ScriptLines::Elements(const char* name) {
    std::vector<std::string> texts;
    for (const value::CVal& element : List(name).Elements())
        texts.push_back(text::ToUtf8(value::ValueToText(element)));
    return texts;
}

}  // namespace kalvex::engine
