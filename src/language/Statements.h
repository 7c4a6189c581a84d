// Every statement of the language, in the order in which keywords are tried.
#pragma once

#include "engine/Statement.h"

namespace kalvex::language {

const engine::StatementTable& Statements();

}  // namespace kalvex::language
