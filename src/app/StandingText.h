// What a script stands on as texts for people: one table of words, two forms. Engine texts without
// control characters, so a terminal can show them as they are. Any thread.
#pragma once

#include <string>
#include <vector>

#include "engine/ScriptStanding.h"
#include "platform/Translator.h"

namespace kalvex::app {

// Everything in one line of any length.
std::string FormatStandingStatus(const engine::ScriptStanding& standing,
                                 const platform::Translator& translator);

// A heading and its value in a line each, at most 80 characters wide and 24 lines in all. A long
// value goes on below itself and ends after three lines in "...".
std::vector<std::string> FormatStandingReport(const engine::ScriptStanding& standing,
                                              const platform::Translator& translator);

}  // namespace kalvex::app
