// What the toolkit has to be told once, behind its application. Main thread.
#pragma once

#include "platform/Translator.h"

namespace kalvex::window {

// The program's name and icon, the numbers of the C locale, and the toolkit's own words in the
// language of the messages.
void PrepareToolkit(const platform::Translator& translator);

}  // namespace kalvex::window
