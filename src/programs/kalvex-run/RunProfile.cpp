#include "programs/kalvex-run/RunProfile.h"

#include <filesystem>

#include "app/Configuration.h"
#include "app/ServerAddresses.h"
#include "platform/Files.h"
#include "platform/IniProfile.h"

namespace kalvex {

CRunProfile ReadRunProfile(const RunOptions& options, const std::string& workingDir) {
    CRunProfile settings;
    settings.rootFolder = workingDir;
    if (options.profile) {
        std::string content;
        std::string error;
        if (!ReadWholeFile(*options.profile, content, error)) {
            settings.fault = *options.profile + ": " + error;
        }
        const std::filesystem::path file = *options.profile;
        settings.crypt = std::make_unique<CCrypt>((file.parent_path() / kKeyFileName).string(),
                                                  KeyFile::ReadOnly);
        IniProfile profile(*options.profile);
        const Paths paths(workingDir);
        const CConfigurationStore store(profile, *settings.crypt, paths, false);
        CConfiguration configuration;
        store.ReadSources(configuration);
        store.ReadLogLevel(configuration);
        settings.sources = std::move(configuration.sources);
        settings.servers = ReadServerAddresses(profile);
        settings.logLevel = configuration.logLevel;
        settings.rootFolder = ReadRootFolder(profile, workingDir);
    }
    settings.logLevel = options.logLevel.value_or(settings.logLevel);
    return settings;
}

}  // namespace kalvex
