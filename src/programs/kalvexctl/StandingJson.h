// What modules tell of their scripts as JSON, an object in a line each. Records bear engine texts.
#pragma once

#include <string>

#include "app/Supervision.h"

namespace kalvex::kalvexctl {

std::string StatusJson(const app::ModuleStatus& status);
// Of a module that has none, in its place; the error is UTF-8.
std::string UnansweredJson(const std::string& module, const std::string& error);
std::string StandingJson(const std::string& script, const engine::ScriptStanding& standing);

}  // namespace kalvex::kalvexctl
