// Tells the current values of a server that runs.
#pragma once

#include "platform/Translator.h"
#include "programs/sorvaned/Options.h"
#include "server/Definitions.h"

namespace kalvex::sorvaned {

// Prints a line a value, and with --watch one for each change until it is told to end; the answer
// is the exit status.
int ShowValues(const server::Definitions& definitions, const SorvanedOptions& options,
               const platform::Translator& translator);

}  // namespace kalvex::sorvaned
