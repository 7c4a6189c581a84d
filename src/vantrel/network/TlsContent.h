// The content of certificates and keys.
#pragma once

#include <string>

#include "platform/Translator.h"
#include "vantrel/network/Endpoint.h"

namespace kalvex {

struct TlsContent {
    std::string authority;
    std::string certificate;
    std::string key;
};

// False, with the reason in `error`, when a file that is named cannot be read.
bool ReadTlsFiles(const TlsFiles& files, TlsContent& content, Notice& error);

}  // namespace kalvex
