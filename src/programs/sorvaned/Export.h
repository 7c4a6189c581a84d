// Tells archive values or reports of the store, whether its server runs or not.
#pragma once

#include "platform/Translator.h"
#include "programs/sorvaned/Options.h"
#include "server/Definitions.h"

namespace kalvex::sorvaned {

// Prints them, a line a value, by variables and times; the answer is the exit status.
int Export(const server::Definitions& definitions, const SorvanedOptions& options,
           const platform::Translator& translator);

}  // namespace kalvex::sorvaned
