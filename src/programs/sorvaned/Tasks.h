// What the program does once its command line is read. The answer is the exit status.
#pragma once

#include "programs/sorvaned/Options.h"

namespace kalvex::sorvaned {

int RunSorvaned(const SorvanedOptions& options);

}  // namespace kalvex::sorvaned
