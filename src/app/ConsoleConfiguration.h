// How clients reach the console of a module: the section "Konsola" of its profile. Main thread.
#pragma once

#include <string>
#include <vector>

#include "platform/Profile.h"
#include "platform/Translator.h"
#include "vantrel/Listening.h"

namespace kalvex::app {

// The highest that `clients` can be.
inline constexpr int kMostConsoleClients = 10'000;

struct ConsoleConfiguration {
    vantrel::Listening listening = {};
    int clients = 100;  // so many at a time
};

// A key that is missing, or has no value, leaves the default. The answer has a line for each fault,
// an engine text that names the file, `path`, its line and the key; with any, nothing is to listen,
// since what was meant is not known.
std::vector<std::string> ReadConsole(const platform::Profile& profile, const std::string& path,
                                     const platform::Translator& translator,
                                     ConsoleConfiguration& console);

}  // namespace kalvex::app
