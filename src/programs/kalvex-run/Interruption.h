// SIGINT and SIGTERM, which end a run as its tick limit does.
#pragma once

namespace kalvex::run {

// From now on either signal is remembered and does nothing else.
void WatchInterruption();

bool IsInterrupted();

}  // namespace kalvex::run
