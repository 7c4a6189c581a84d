// Tells whether the store is sound, and what each variable has in it.
#pragma once

#include "platform/Translator.h"
#include "programs/sorvaned/Options.h"
#include "server/Definitions.h"

namespace kalvex::sorvaned {

// Prints a line a variable and a summary, or what is wrong; the answer is the exit status.
int CheckStore(const server::Definitions& definitions, const SorvanedOptions& options,
               const platform::Translator& translator);

}  // namespace kalvex::sorvaned
