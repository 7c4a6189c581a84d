// The texts of the engine and those of the toolkit. Any thread.
#pragma once

#include <QString>
#include <string>
#include <string_view>

#include "platform/Translator.h"

namespace kalvex::window {

// From an engine text, and to one; a character that Windows-1250 does not have becomes "?".
QString ToQt(std::string_view engineText);
std::string FromQt(const QString& text);

// The Polish text as the user reads it.
inline QString Translated(const platform::Translator& translator, const char* polish) {
    return ToQt(translator.Translate(polish));
}

}  // namespace kalvex::window
