// Brings archive values and reports of a file into the store, by way of the server that runs.
#pragma once

#include "platform/Translator.h"
#include "programs/sorvaned/Options.h"
#include "server/Definitions.h"

namespace kalvex::sorvaned {

// Tells what is wrong with the file, and what it changes or would change; the answer is the exit
// status.
int Import(const server::Definitions& definitions, const SorvanedOptions& options,
           const platform::Translator& translator);

}  // namespace kalvex::sorvaned
