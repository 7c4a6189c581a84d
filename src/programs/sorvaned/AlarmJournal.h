// Tells which alarms have been.
#pragma once

#include "platform/Translator.h"
#include "programs/sorvaned/Options.h"
#include "server/Definitions.h"

namespace kalvex::sorvaned {

// Prints them, a line an alarm; the answer is the exit status.
int ShowAlarms(const server::Definitions& definitions, const SorvanedOptions& options,
               const platform::Translator& translator);

}  // namespace kalvex::sorvaned
