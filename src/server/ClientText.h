// How the log names clients, their logins and what they name. Engine texts; what a client gives may
// be anything.
#pragma once

#include <string>
#include <string_view>

#include "platform/Translator.h"
#include "vantrel/LoginDesk.h"

namespace kalvex::server {

// The client's name, and its address unless it is on this machine.
std::string ClientText(std::string_view name, const std::string& address);

// `user` is the name that was given.
std::string LoginLine(const vantrel::LoginVerdict& verdict, std::string_view user,
                      const std::string& client, const platform::Translator& translator);

}  // namespace kalvex::server
