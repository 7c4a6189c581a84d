#include "workbench/model/ScriptTitle.h"

#include <algorithm>

#include "engine/ScriptDocument.h"
#include "text/TextFormat.h"

namespace kalvex::workbench {

namespace {

struct ModeRow {
    engine::ScriptStateBit state;
    const char* mark;
    const char* atHolder;  // of the title and the module
};

constexpr ModeRow kModes[] = {
    {engine::StateRunning, platform::Translatable(" [tryb uruchomieniowy]"),
     platform::Translatable("%s [%s - tryb uruchomieniowy]")},
    {engine::StatePaused, platform::Translatable(" [tryb krokowy]"),
     platform::Translatable("%s [%s - tryb krokowy]")},
};

constexpr const char* kReadOnly = platform::Translatable(" [tylko do odczytu]");
constexpr const char* kReadOnlyCopy = platform::Translatable(" [RC - tylko do odczytu]");

std::string Replaced(std::string_view title, std::string_view mark, std::string_view by) {
    std::string text(title);
    const std::size_t at = text.find(mark);
    if (at != std::string::npos) text.replace(at, mark.size(), by);
    return text;
}

}  // namespace

std::string ScriptTitle(std::string_view title, int stateWord, TitleSide side,
                        std::string_view module, const platform::Translator& translator) {
    const auto* mode = std::ranges::find_if(
        kModes, [stateWord](const ModeRow& row) { return (stateWord & row.state) != 0; });
    if (mode == std::end(kModes)) return std::string(title);
    const std::string mark = translator.Translate(kReadOnly);
    if (side == TitleSide::Module) {
        return Replaced(title, mark, {}) + translator.Translate(mode->mark);
    }
    const std::string copy = Replaced(title, mark, translator.Translate(kReadOnlyCopy));
    if (side == TitleSide::Reader) return copy;
    return text::FormatText(translator.Translate(mode->atHolder), {copy, module});
}

}  // namespace kalvex::workbench
