#include "platform/IniProfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>

#include "support/environment_scope.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::platform {
namespace {

using testing::ElementsAre;
using testing::Pair;

class IniProfileTest : public testing::Test {
  protected:
    std::string Content() const { return m_folder.Get("Kalvex.ini"); }
    void Put(const std::string& content) const { m_folder.Put("Kalvex.ini", content); }

    std::string WriteFault() const {
        return InWords(m_profile.GetWriteFault(), support::MarkingTranslator(false));
    }

    // Forks; the child never returns.
    static pid_t Fork(const std::function<void()>& work) {
        const pid_t child = ::fork();
        if (child == 0) {
            work();
            ::_exit(0);
        }
        return child;
    }

    support::ScratchFolder m_folder;
    const std::string m_path = m_folder.Path("Kalvex.ini");
    IniProfile m_profile{m_path};
};

TEST_F(IniProfileTest, MissingFileGivesTheFallbacks) {
    EXPECT_EQ(m_profile.GetProfileStringEx("Konfiguracja", "Nazwa"), "");
    EXPECT_EQ(m_profile.GetProfileStringEx("Konfiguracja", "Nazwa", "x"), "x");
    EXPECT_EQ(m_profile.GetProfileIntEx("Log", "Rodzaj", 1), 1);
    EXPECT_FALSE(m_folder.Has("Kalvex.ini"));
}

TEST_F(IniProfileTest, BinaryFileIsNeitherReadNorWritten) {
    const std::string content("[Log]\r\nRodzaj=2\r\n\0", 18);
    Put(content);
    struct stat before {};
    ASSERT_EQ(::stat(m_path.c_str(), &before), 0);
    std::string error;
    EXPECT_FALSE(m_profile.IsReadable(error));
    EXPECT_EQ(error, "to plik binarny, a nie tekst");
    EXPECT_EQ(m_profile.GetProfileIntEx("Log", "Rodzaj", 1), 1);
    EXPECT_FALSE(m_profile.WriteProfileIntEx("Log", "Rodzaj", 1));
    EXPECT_EQ(WriteFault(), "to plik binarny, a nie tekst");
    EXPECT_EQ(Content(), content);
    struct stat after {};
    ASSERT_EQ(::stat(m_path.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(IniProfileTest, EmptyValueIsNoFallback) {
    Put("[a]\r\nk=\r\n");
    EXPECT_EQ(m_profile.GetProfileStringEx("a", "k", "x"), "");
}

TEST_F(IniProfileTest, ReadsTheNumberThatAValueBeginsWith) {
    Put("[a]\nb=-12\nc=7 sekund\nd=siedem\ne=\nf=99999999999\n");
    EXPECT_EQ(m_profile.GetProfileIntEx("a", "b", 1), -12);
    EXPECT_EQ(m_profile.GetProfileIntEx("a", "c", 1), 7);
    EXPECT_EQ(m_profile.GetProfileIntEx("a", "d", 1), 1);
    EXPECT_EQ(m_profile.GetProfileIntEx("a", "e", 1), 1);
    EXPECT_EQ(m_profile.GetProfileIntEx("a", "f", 1), 1);
}

TEST_F(IniProfileTest, FirstWriteMakesTheFile) {
    EXPECT_TRUE(m_profile.WriteProfileIntEx("Log", "Rodzaj", 2));
    EXPECT_EQ(Content(), "[Log]\r\nRodzaj=2\r\n");
    EXPECT_FALSE(m_folder.Has("Kalvex.ini.tmp"));
}

TEST_F(IniProfileTest, PolishTextsAreWindows1250) {
    EXPECT_TRUE(m_profile.WriteProfileStringEx("Okna", text::FromUtf8("Szerokości kolumn"),
                                               text::FromUtf8("żółw")));
    EXPECT_EQ(Content(), "[Okna]\r\nSzeroko\x9C\x63i kolumn=\xBF\xF3\xB3w\r\n");
}

TEST_F(IniProfileTest, WithoutAValueTheKeyGoesAndWithoutAKeyTheSection) {
    Put("[a]\nb=1\nc=2\n[d]\ne=3\n");
    EXPECT_TRUE(m_profile.WriteProfileStringEx("a", "b", std::nullopt));
    EXPECT_EQ(Content(), "[a]\nc=2\n[d]\ne=3\n");
    EXPECT_TRUE(m_profile.WriteProfileStringEx("a", std::nullopt, std::nullopt));
    EXPECT_EQ(Content(), "[d]\ne=3\n");
}

TEST_F(IniProfileTest, SectionIsReplacedAtOnce) {
    Put("[a]\nProcedura0=1\nProcedura1=2\nProcedura3=4\n");
    EXPECT_TRUE(m_profile.WriteProfileSectionEx("a", {{"Procedura0", "9"}}));
    EXPECT_THAT(m_profile.GetProfileSectionEx("a"), ElementsAre(Pair("Procedura0", "9")));
}

TEST_F(IniProfileTest, AnotherFileIsReadAndWrittenByItsPath) {
    m_folder.Put("wspolny.ini", "[Konfiguracja]\nAutoRC=0\n");
    const std::string path = m_folder.Path("wspolny.ini");
    EXPECT_EQ(m_profile.GetProfileIntEx("Konfiguracja", "AutoRC", 1, path), 0);
    EXPECT_TRUE(m_profile.WriteProfileIntEx("Konfiguracja", "AutoRC", 1, path));
    EXPECT_EQ(m_folder.Get("wspolny.ini"), "[Konfiguracja]\nAutoRC=1\n");
    EXPECT_FALSE(m_folder.Has("Kalvex.ini"));
}

TEST_F(IniProfileTest, CommonProfileIsNamedByTheEnvironment) {
    {
        const support::EnvironmentScope common("SORVANE_COMMON_PROFILE", "/srv/wspolny.ini");
        EXPECT_EQ(m_profile.GetCommonProfilePath(), "/srv/wspolny.ini");
    }
    EXPECT_EQ(m_profile.GetCommonProfilePath(), "/etc/sorvane/sorvane.ini");
}

TEST_F(IniProfileTest, RightsOfTheFileStay) {
    Put("[a]\nb=1\n");
    ASSERT_EQ(::chmod(m_path.c_str(), 0604), 0);
    EXPECT_TRUE(m_profile.WriteProfileIntEx("a", "b", 2));
    struct stat info {};
    ASSERT_EQ(::stat(m_path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0604u);
}

TEST_F(IniProfileTest, LinkStaysALink) {
    m_folder.Put("plik.ini", "[a]\nb=1\n");
    std::filesystem::create_symlink("plik.ini", m_path);
    EXPECT_TRUE(m_profile.WriteProfileIntEx("a", "b", 2));
    EXPECT_TRUE(std::filesystem::is_symlink(m_path));
    EXPECT_EQ(m_folder.Get("plik.ini"), "[a]\nb=2\n");
}

TEST_F(IniProfileTest, WriteThatChangesNothingLeavesTheFileAlone) {
    Put("[a]\nb=1\n");
    struct stat before {};
    ASSERT_EQ(::stat(m_path.c_str(), &before), 0);
    EXPECT_TRUE(m_profile.WriteProfileIntEx("a", "b", 1));
    struct stat after {};
    ASSERT_EQ(::stat(m_path.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(IniProfileTest, FolderThatIsMissingRefusesTheWrite) {
    IniProfile profile(m_folder.Path("nie/ma/Kalvex.ini"));
    EXPECT_FALSE(profile.WriteProfileIntEx("a", "b", 1));
}

TEST_F(IniProfileTest, WhatIsThereAndCannotBeReadIsNotReplaced) {
    std::filesystem::create_directory(m_path);
    EXPECT_FALSE(m_profile.WriteProfileIntEx("a", "b", 1));
    EXPECT_TRUE(std::filesystem::is_directory(m_path));
}

TEST_F(IniProfileTest, WriterThatFindsNoRoomLeavesTheOldContent) {
    Put("[a]\nb=1\n");
    const pid_t child = Fork([this] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{20, 20};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::_exit(m_profile.WriteProfileStringEx("a", "b", std::string(1000, 'x')) ? 1 : 42);
    });
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 42);
    EXPECT_EQ(Content(), "[a]\nb=1\n");
    EXPECT_FALSE(m_folder.Has("Kalvex.ini.tmp"));
}

TEST_F(IniProfileTest, KilledWriterNeverDamagesTheProfile) {
    constexpr int kRounds = 50;
    const auto value = [](char c) { return std::string(200000, c); };
    Put("; uwaga\r\n[a]\r\nb=" + value('x') + "\r\n[c]\r\nd=1\r\n");
    for (int round = 0; round < kRounds; ++round) {
        int progress[2];
        ASSERT_EQ(::pipe(progress), 0);
        const pid_t child = Fork([&] {
            for (char c = 'a';; c = c == 'z' ? 'a' : static_cast<char>(c + 1)) {
                m_profile.WriteProfileStringEx("a", "b", value(c));
                if (::write(progress[1], &c, 1) != 1) ::_exit(1);
            }
        });
        ::close(progress[1]);
        char last = 0;
        for (int i = 0; i <= round % 5; ++i) ASSERT_EQ(::read(progress[0], &last, 1), 1);
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        ::close(progress[0]);

        const std::string content = Content();
        ASSERT_GT(content.size(), 18u);
        ASSERT_EQ(content, "; uwaga\r\n[a]\r\nb=" + value(content[16]) + "\r\n[c]\r\nd=1\r\n");
    }
    EXPECT_TRUE(m_profile.WriteProfileStringEx("a", "b", "y"));
    EXPECT_FALSE(m_folder.Has("Kalvex.ini.tmp"));
}

TEST_F(IniProfileTest, WritersOfOneFileWaitForEachOther) {
    constexpr int kWriters = 4;
    constexpr int kKeys = 10;
    std::vector<pid_t> children;
    for (int writer = 0; writer < kWriters; ++writer) {
        children.push_back(Fork([this, writer] {
            for (int key = 0; key < kKeys; ++key) {
                m_profile.WriteProfileIntEx(std::to_string(writer), std::to_string(key), key);
            }
        }));
    }
    for (const pid_t child : children) ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    for (int writer = 0; writer < kWriters; ++writer) {
        EXPECT_EQ(m_profile.GetProfileSectionEx(std::to_string(writer)).size(), std::size_t{kKeys});
    }
}

TEST_F(IniProfileTest, SectionIsReadAndWrittenWithNoOtherWriterInBetween) {
    constexpr int kWriters = 4;
    constexpr int kEntries = 10;
    std::vector<pid_t> children;
    for (int writer = 0; writer < kWriters; ++writer) {
        children.push_back(Fork([this] {
            for (int entry = 0; entry < kEntries; ++entry) {
                m_profile.EditProfileSectionEx("a", [](ProfileEntries& entries) {
                    entries.emplace_back("k" + std::to_string(entries.size()), "x");
                    return true;
                });
            }
        }));
    }
    for (const pid_t child : children) ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_EQ(m_profile.GetProfileSectionEx("a").size(), std::size_t{kWriters * kEntries});
}

TEST_F(IniProfileTest, SectionThatIsNotToBeChangedStays) {
    Put("[a]\nb=1\n");
    EXPECT_FALSE(m_profile.EditProfileSectionEx("a", [](ProfileEntries& entries) {
        EXPECT_THAT(entries, ElementsAre(Pair("b", "1")));
        entries.clear();
        return false;
    }));
    EXPECT_EQ(Content(), "[a]\nb=1\n");
    EXPECT_FALSE(m_profile.GetWriteFault());
}

TEST_F(IniProfileTest, ReasonOfAWriteThatFailsIsKeptUntilTheNext) {
    EXPECT_FALSE(m_profile.WriteProfileStringEx("a", "b", "x", m_folder.Path("nie/ma.ini")));
    EXPECT_EQ(WriteFault(), "No such file or directory");
    EXPECT_TRUE(m_profile.WriteProfileStringEx("a", "b", "x"));
    EXPECT_FALSE(m_profile.GetWriteFault());
}

TEST_F(IniProfileTest, MarkOfUtf8IsReadPastAndStays) {
    Put("\xEF\xBB\xBF[a]\nb=1\n");
    EXPECT_EQ(m_profile.GetProfileStringEx("a", "b"), "1");
    EXPECT_TRUE(m_profile.WriteProfileStringEx("a", "b", "2"));
    EXPECT_EQ(Content(), "\xEF\xBB\xBF[a]\nb=2\n");
}

TEST_F(IniProfileTest, AnotherFileThatIsThereAndCannotBeReadIsKnown) {
    std::string error;
    EXPECT_TRUE(m_profile.IsReadable(error, m_folder.Path("nie_ma.ini")));
    std::filesystem::create_directory(m_folder.Path("inny.ini"));
    EXPECT_FALSE(m_profile.IsReadable(error, m_folder.Path("inny.ini")));
    EXPECT_EQ(error, "Is a directory");
}

}  // namespace
}  // namespace kalvex::platform
