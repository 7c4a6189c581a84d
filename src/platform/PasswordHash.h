// Passwords as they are kept: salted, by a function that is made to be slow.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::platform {

// Interactive costs about 50 ms and 64 MB for each making and each check of a hash, so it is kept
// off the main thread of a server. Least is for tests.
enum class PasswordCost { Least, Interactive };

// The text holds the salt and the cost. Empty when there is no memory for it. Any thread.
std::string HashPassword(std::string_view password, PasswordCost cost);

// At the cost that the hash was made with. Any thread.
bool CheckPassword(const std::string& hash, std::string_view password);

// Overwrites a password that is not needed any more.
void WipePassword(std::string& password);

}  // namespace kalvex::platform
