// How the log names an order that has not reached its server.
#pragma once

#include <string>

#include "platform/Translator.h"
#include "vantrel/Requests.h"

namespace kalvex::sources {

// The statement with what it was to do, and what it was to write. An engine text.
std::string LostOrderText(const vantrel::LostOrder& order, const platform::Translator& translator);

}  // namespace kalvex::sources
