// The content of certificates and keys.
#pragma once

#include <string>

#include "platform/Translator.h"
#include "vantrel/network/Endpoint.h"

namespace kalvex::vantrel {

struct TlsContent {
    std::string authority;
    std::string certificate;
    std::string key;
};

// False, with the reason in `error`, when a file that is named cannot be read, or others can read
// the key.
bool ReadTlsFiles(const TlsFiles& files, TlsContent& content, platform::Notice& error);

// Whether a server can show the certificate, with what stands behind it, and has its key.
bool CanBeShown(const TlsContent& content);

}  // namespace kalvex::vantrel
