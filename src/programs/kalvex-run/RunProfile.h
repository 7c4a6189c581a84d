// What a run takes from the profile that its options name, and with it from the common profile of
// the machine. Nothing is written.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/Crypt.h"
#include "programs/kalvex-run/Options.h"
#include "sources/ClientInterface.h"
#include "vantrel/network/Endpoint.h"

namespace kalvex::run {

struct RunProfile {
    int logLevel = platform::LogErrors;
    std::string rootFolder;  // of data files; the system's encoding
    std::vector<sources::CSourceDesc> sources;
    vantrel::ServerAddresses servers;  // of the machine's common profile
    std::unique_ptr<platform::CCrypt>
        crypt;  // that the sources' passwords are protected by; null without
    std::vector<std::string> warnings;  // for the log; engine texts
    std::string fault;                  // why the file cannot be read
};

// The defaults where the options name no profile; the log level that they give goes before that of
// the profile.
RunProfile ReadRunProfile(const RunOptions& options, const std::string& workingDir,
                          const platform::Translator& translator);

}  // namespace kalvex::run
