// Writes what an import has found to be new or changed, as a client of the server that runs. Main
// thread.
#pragma once

#include "programs/sorvaned/Caller.h"
#include "programs/sorvaned/ImportTable.h"

namespace kalvex::sorvaned {

// The login has been taken. Each row is written once, also when the server goes and comes back
// meanwhile. False, told on standard error, when not all is written and confirmed.
bool WriteImported(Caller& caller, ImportTable& table, const server::Definitions& definitions);

}  // namespace kalvex::sorvaned
