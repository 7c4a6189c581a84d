// The content of certificates and keys.
#pragma once

#include <string>

#include "vantrel/network/Endpoint.h"

namespace kalvex {

struct TlsContent {
    std::string authority;
    std::string certificate;
    std::string key;
};

// False, with Polish words in `error` (UTF-8), when a file that is named cannot be read.
bool ReadTlsFiles(const TlsFiles& files, TlsContent& content, std::string& error);

}  // namespace kalvex
