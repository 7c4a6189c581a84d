// A process that writes until it is killed, and what it had confirmed by then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace kalvex::server {

// Tells that the write of this number is confirmed. Only for the process that writes; ends it when
// nobody listens.
void TellConfirmed(int tell, std::int64_t number);

// Runs `write` in a process of its own, which must not return and tells through the descriptor that
// it is given, and kills it once it has told of so many. The numbers of all that it told of.
std::vector<std::int64_t> RunAndKill(const std::function<void(int tell)>& write,
                                     std::size_t enough);

}  // namespace kalvex::server
