// A copy of an SQLite file that other programs may be working with.
#pragma once

#include <string>

namespace kalvex::platform {

// Copies the file as it stands at one moment, with what its journal holds, and holds up nobody who
// writes with a write-ahead log. The copy is one file, for its owner alone to read and write; it
// has been opened and checked from its first page to its last, and takes the place of `to` as a
// whole or not at all. A break may leave ".new" behind the name; the next copy clears it. False
// with the words for the failure in `error` (UTF-8).
bool CopyDatabase(const std::string& from, const std::string& to, std::string& error);

}  // namespace kalvex::platform
