// Tells who wrote a value, and what stood there before.
#pragma once

#include "platform/Translator.h"
#include "programs/sorvaned/Options.h"
#include "server/Definitions.h"

namespace kalvex::sorvaned {

// Prints it, a line a value; the answer is the exit status.
int ShowHistory(const server::Definitions& definitions, const SorvanedOptions& options,
                const platform::Translator& translator);

}  // namespace kalvex::sorvaned
