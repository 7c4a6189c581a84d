// Acknowledges alarms of a server that runs.
#pragma once

#include "platform/Translator.h"
#include "programs/sorvaned/Options.h"
#include "server/Definitions.h"

namespace kalvex::sorvaned {

// Prints the name of each variable whose alarms are acknowledged; the answer is the exit status.
int Acknowledge(const server::Definitions& definitions, const SorvanedOptions& options,
                const platform::Translator& translator);

}  // namespace kalvex::sorvaned
