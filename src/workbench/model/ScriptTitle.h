// The title of a script's frame, which tells what the script does. Engine texts.
#pragma once

#include <string>
#include <string_view>

#include "platform/Translator.h"

namespace kalvex::workbench {

enum class TitleSide {
    Module,  // where the script runs
    Holder,  // a console that has its session
    Reader,  // another console
};

// Made of the title without a mode, which bears the mark of a document that is read-only. The
// module is the one that a console mirrors.
std::string ScriptTitle(std::string_view title, int stateWord, TitleSide side,
                        std::string_view module, const platform::Translator& translator);

}  // namespace kalvex::workbench
