// Why a script has a value of a server variable, or has none. Main thread.
#pragma once

#include "engine/ScriptSources.h"
#include "sources/InterfaceObj.h"

namespace kalvex::sources {

engine::DataState FindDataState(CInterfaceObj& link, value::ValueKind kind);

}  // namespace kalvex::sources
