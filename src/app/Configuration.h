// The settings of the process and the profile that keeps them. Main thread. Texts are engine texts.
#pragma once

#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Crypt.h"
#include "platform/LogSink.h"
#include "platform/Paths.h"
#include "platform/Profile.h"
#include "platform/Translator.h"
#include "sources/ClientInterface.h"

namespace kalvex::app {

// Of a console client that has not heard yet which level its module has: nothing is filtered.
inline constexpr int kLogLevelOfModule = std::numeric_limits<std::uint16_t>::max();

struct KalvexConfiguration {
    std::string moduleName;  // empty: none is given
    std::string configurationRight = "100";
    std::string controlRight = "100";
    bool trayIcon = true;
    unsigned int refreshPeriod = 1000;          // milliseconds
    std::vector<unsigned int> columnWidths;     // of the variables window, from index 0
    std::vector<std::string> autostart;         // full paths, in order
    std::vector<sources::CSourceDesc> sources;  // passwords in the form of CCrypt::EncryptText
    int logLevel = platform::LogErrors;
};

class ConfigurationStore {
  public:
    // Nothing referred to is owned; all of it outlives the store.
    ConfigurationStore(platform::Profile& profile, const platform::CCrypt& crypt,
                       const platform::Paths& paths, bool consoleClient)
        : m_profile(profile), m_crypt(crypt), m_paths(paths), m_consoleClient(consoleClient) {}

    // A missing key leaves the default; lists are appended to. A password that the key does not
    // open stays as the profile has it.
    void ReadName(KalvexConfiguration& configuration) const;
    void ReadSources(KalvexConfiguration& configuration) const;
    void ReadWindows(KalvexConfiguration& configuration) const;  // with the scripts to start
    void ReadColumns(KalvexConfiguration& configuration) const;
    void ReadRights(KalvexConfiguration& configuration) const;
    void ReadLogLevel(KalvexConfiguration& configuration) const;

    // What has to be said of the profile, a path, of that of the machine, and of the sources that
    // have been read from it: engine texts that name the file, and the entry where it is one.
    std::vector<std::string> FindFaults(const KalvexConfiguration& configuration,
                                        const std::string& profile,
                                        const platform::Translator& translator) const;

    // Has the sources changed and writes them, if `change` says so, with no other writer in
    // between: all of them or, when a password cannot be protected, none. False when they could not
    // be written.
    bool EditSources(const std::function<bool(std::vector<sources::CSourceDesc>&)>& change);

    // What cannot be written is not reported, but for the log level. A console client writes no log
    // level, and transmission is never kept as one. A value that is not the number that it should
    // be stays as long as the setting is what was read for it.
    void WriteColumns(const KalvexConfiguration& configuration);
    bool WriteLogLevel(const KalvexConfiguration& configuration);
    // What is said of a level that could not be written to the profile, an engine text.
    std::string WhyNoLogLevel(const std::string& profile,
                              const platform::Translator& translator) const;
    // The font of the log window, as the toolkit writes one down; empty: none was chosen.
    std::string ReadLogFont() const;
    void WriteLogFont(std::string_view font);
    // What the application dialog has: windows, scripts to start, log level, rights.
    void WriteApplication(const KalvexConfiguration& configuration);

  private:
    bool WriteNumber(const char* section, const char* key, int value, int fallback);
    std::vector<std::string> ReadList(std::string_view section, std::string_view key) const;
    std::vector<sources::CSourceDesc> OpenSources(const std::vector<std::string>& lines) const;
    std::string SealSource(const sources::CSourceDesc& source) const;
    std::optional<std::string> DecodePassword(std::string_view text) const;

    platform::Profile& m_profile;
    const platform::CCrypt& m_crypt;
    const platform::Paths& m_paths;
    const bool m_consoleClient;
};

// Whether a source may have it as its name or its user: the profile keeps both in one line.
bool IsSourceField(std::string_view text);

// The name of the file with the key of a profile's passwords, which lies beside the profile.
inline constexpr char kKeyFileName[] = "Kalvex.key";

// The name of the profile of an instance, without its folder.
std::string ProfileFileName(int instance);

// The folder that data files lie in, by the profile, else the working directory; both, and the
// answer, in the system's encoding.
std::string ReadRootFolder(const platform::Profile& profile, const std::string& workingDir);

}  // namespace kalvex::app
