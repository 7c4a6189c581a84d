// Where a server is to listen for its clients, as its configuration says. Main thread.
#pragma once

#include <string>
#include <string_view>

#include "platform/Translator.h"

namespace kalvex::vantrel {

// Texts are UTF-8, files those of PEM; empty for none.
struct Listening {
    bool localSocket = true;  // that bears the name of the source
    std::string group = {};   // whose members may use the socket besides its owner
    std::string address = {};
    std::string certificate = {};
    std::string certificateKey = {};
    std::string authority = {};     // that has signed the certificates of clients
    bool plainTextAllowed = false;  // without a certificate also where other machines can hear
};

// Each takes a value as a configuration has it, an engine text; the answer tells what is wrong.
platform::Notice SetListeningGroup(Listening& target, std::string_view text);
platform::Notice SetListeningAddress(Listening& target, std::string_view text);
platform::Notice SetConfiguredPath(std::string& path, std::string_view text);

// How a configuration names what it sets, UTF-8.
struct ListeningKeys {
    const char* group;
    const char* address;
    const char* certificate;
    const char* certificateKey;
    const char* authority;
    const char* plainText;  // the words by which plain text is allowed
};

// What the settings need as a whole; empty when all is well, else the key, one of the first five,
// and the reason.
platform::Notice CheckListening(const Listening& listening, const ListeningKeys& keys,
                                std::string& key);

}  // namespace kalvex::vantrel
