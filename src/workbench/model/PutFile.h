// Files that are kept beside a person's work. Paths are the system's (UTF-8). Main thread.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::workbench {

// Puts the content in place of the file as a whole, making its folders; only the owner may read it.
// A reader finds the former content or the new one. False with the system's words in `error` leaves
// what there was, and nothing else.
bool PutFile(const std::string& path, std::string_view content, std::string& error);

}  // namespace kalvex::workbench
