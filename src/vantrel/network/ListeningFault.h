// Why nothing can listen at an address.
#pragma once

#include <string>

namespace kalvex::vantrel {

// The system's words (UTF-8); empty when the address is free. Main thread.
std::string ListeningFault(const std::string& address);

}  // namespace kalvex::vantrel
