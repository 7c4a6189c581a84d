// Words for what a client orders of a server and for how it ended, for lines of logs. Engine texts.
#pragma once

#include <cstdint>
#include <string>

#include "platform/Translator.h"
#include "vantrel/Messages.h"

namespace kalvex::vantrel {

// The write of a value of the kind, and of a list of archive values.
std::string WriteWords(value::ValueKind kind, const platform::Translator& translator);
std::string PeriodWords(PeriodAction action, value::ValueKind kind,
                        const platform::Translator& translator);

// Why an order ended with that result, which is not 0.
std::string ResultWords(std::uint16_t result, const platform::Translator& translator);

}  // namespace kalvex::vantrel
