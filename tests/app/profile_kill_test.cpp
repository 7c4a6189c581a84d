// A process that is killed while it writes its profile.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "app/Configuration.h"
#include "platform/IniProfile.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::app {
namespace {

constexpr int kKills = 100;

constexpr const char* kBegin =
    "; ustawienia stacji\r\n[Konfiguracja]\r\nNazwa=Kotłownia\r\n\r\n[Autostart]\r\n"
    "Procedura0=bilans.kx\r\n\r\n[Log]\r\nRodzaj=";
constexpr const char* kEnd = "\r\n\r\n[Moje]\r\nklucz=1\r\n";

std::string Content(int level) {
    return text::FromUtf8(kBegin + std::to_string(level) + kEnd);
}

// Changes the level for ever and tells each change by a byte.
[[noreturn]] void WriteForEver(const std::string& folder, int told) {
    platform::IniProfile profile(folder + "/Kalvex.ini");
    const platform::CCrypt crypt(folder + "/Kalvex.key", platform::KeyFile::ReadOnly);
    const platform::Paths paths(folder);
    ConfigurationStore store(profile, crypt, paths, false);
    KalvexConfiguration configuration;
    for (int level = 1;; level = 3 - level) {
        configuration.logLevel = level;
        store.WriteLogLevel(configuration);
        if (::write(told, "", 1) != 1) std::_Exit(EXIT_FAILURE);
    }
}

TEST(ProfileKillTest, ProfileIsWholeHoweverOftenTheProcessIsKilled) {
    const support::ScratchFolder folder;
    folder.Put("Kalvex.ini", Content(1));
    for (int kill = 0; kill < kKills; ++kill) {
        int told[2];
        ASSERT_EQ(::pipe(told), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) WriteForEver(folder.Path(), told[1]);
        ::close(told[1]);
        char byte;
        for (int changes = 0; changes <= kill % 4; ++changes) {
            ASSERT_EQ(::read(told[0], &byte, 1), 1);
        }
        // Every other time in the middle of a change, while the new content is beside the old one.
        while (kill % 2 == 0 && !folder.Has("Kalvex.ini.tmp")) {
        }
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ::close(told[0]);
        ASSERT_TRUE(WIFSIGNALED(status));
        const std::string content = folder.Get("Kalvex.ini");
        ASSERT_TRUE(content == Content(1) || content == Content(2)) << text::ToUtf8(content);
    }
}

}  // namespace
}  // namespace kalvex::app
