#include "programs/kalvex-run/RunProfile.h"

#include <filesystem>

#include "app/Configuration.h"
#include "app/ServerAddresses.h"
#include "platform/Files.h"
#include "platform/IniProfile.h"

namespace kalvex::run {

RunProfile ReadRunProfile(const RunOptions& options, const std::string& workingDir,
                          const platform::Translator& translator) {
    RunProfile settings;
    settings.rootFolder = workingDir;
    if (options.profile) {
        std::string content;
        std::string error;
        if (!platform::ReadWholeFile(*options.profile, content, error)) {
            settings.fault = *options.profile + ": " + error;
        } else if (platform::IniText::IsBinary(content)) {
            settings.fault = *options.profile + ": it is a binary file and no text";
        }
        const std::filesystem::path file = *options.profile;
        settings.crypt = std::make_unique<platform::CCrypt>(
            (file.parent_path() / app::kKeyFileName).string(), platform::KeyFile::ReadOnly);
        platform::IniProfile profile(*options.profile);
        const platform::Paths paths(workingDir);
        const app::ConfigurationStore store(profile, *settings.crypt, paths, false);
        app::KalvexConfiguration configuration;
        store.ReadSources(configuration);
        store.ReadLogLevel(configuration);
        settings.warnings = store.FindFaults(configuration, *options.profile, translator);
        settings.sources = std::move(configuration.sources);
        settings.servers = app::ReadServerAddresses(profile);
        settings.logLevel = configuration.logLevel;
        settings.rootFolder = app::ReadRootFolder(profile, workingDir);
    }
    settings.logLevel = options.logLevel.value_or(settings.logLevel);
    return settings;
}

}  // namespace kalvex::run
