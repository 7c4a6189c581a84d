#include "app/Configuration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/IniProfile.h"
#include "support/environment_scope.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::app {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Writes the sources without a change.
bool AsTheyAre(std::vector<sources::CSourceDesc>&) {
    return true;
}

class ConfigurationTest : public testing::Test {
  protected:
    void Put(const std::string& utf8) const { m_folder.Put("Kalvex.ini", text::FromUtf8(utf8)); }
    std::string Content() const { return text::ToUtf8(m_folder.Get("Kalvex.ini")); }

    KalvexConfiguration Read() const {
        KalvexConfiguration configuration;
        m_store.ReadName(configuration);
        m_store.ReadSources(configuration);
        m_store.ReadWindows(configuration);
        m_store.ReadColumns(configuration);
        m_store.ReadRights(configuration);
        m_store.ReadLogLevel(configuration);
        return configuration;
    }

    std::vector<unsigned int> Columns(const std::string& value) const {
        Put("[Okna]\r\nSzerokości kolumn=" + value + "\r\n");
        return Read().columnWidths;
    }

    // Name, user and password of the first source, its profile line being this.
    std::vector<std::string> Source(const std::string& line) const {
        Put("[Zrodla]\r\nZrodlo0=" + line + "\r\n");
        const KalvexConfiguration configuration = Read();
        EXPECT_THAT(configuration.sources, SizeIs(1));
        const sources::CSourceDesc& source = configuration.sources.at(0);
        EXPECT_TRUE(m_crypt.CanDecryptText(source.password));
        return {source.name, source.user, m_crypt.DecryptText(source.password)};
    }

    support::ScratchFolder m_folder;
    platform::IniProfile m_profile{m_folder.Path("Kalvex.ini")};
    platform::CCrypt m_crypt{m_folder.Path("Kalvex.key"), platform::KeyFile::MadeAtFirstUse};
    platform::Paths m_paths{m_folder.Path()};
    ConfigurationStore m_store{m_profile, m_crypt, m_paths, false};
    ConfigurationStore m_clientStore{m_profile, m_crypt, m_paths, true};
};

TEST_F(ConfigurationTest, EmptyProfileGivesTheDefaults) {
    const KalvexConfiguration configuration = Read();
    EXPECT_EQ(configuration.moduleName, "");
    EXPECT_EQ(configuration.configurationRight, "100");
    EXPECT_EQ(configuration.controlRight, "100");
    EXPECT_TRUE(configuration.trayIcon);
    EXPECT_EQ(configuration.refreshPeriod, 1000u);
    EXPECT_THAT(configuration.columnWidths, ElementsAre(60, 60, 60, 60, 60, 60, 60));
    EXPECT_THAT(configuration.autostart, IsEmpty());
    EXPECT_THAT(configuration.sources, IsEmpty());
    EXPECT_EQ(configuration.logLevel, 1);
}

TEST_F(ConfigurationTest, EveryKeyIsRead) {
    Put("[Konfiguracja]\r\n"
        "Nazwa=Kotłownia\r\n"
        "Poziom uprawnień do konfiguracji=80\r\n"
        "Poziom uprawnień do sterowania procedurą=Dyżurni\r\n"
        "[Okna]\r\n"
        "Ikona w pasku zadan=0\r\n"
        "Częstotliwość odświeżania=250\r\n"
        "Szerokości kolumn=1 2 3 4 5 6 7\r\n"
        "[Autostart]\r\n"
        "Procedura0=a.kx\r\n"
        "Procedura1=/srv/b.kx\r\n"
        "[Log]\r\n"
        "Rodzaj=2\r\n");
    const KalvexConfiguration configuration = Read();
    EXPECT_EQ(configuration.moduleName, text::FromUtf8("Kotłownia"));
    EXPECT_EQ(configuration.configurationRight, "80");
    EXPECT_EQ(configuration.controlRight, text::FromUtf8("Dyżurni"));
    EXPECT_FALSE(configuration.trayIcon);
    EXPECT_EQ(configuration.refreshPeriod, 250u);
    EXPECT_THAT(configuration.columnWidths, ElementsAre(1, 2, 3, 4, 5, 6, 7));
    EXPECT_THAT(configuration.autostart, ElementsAre(m_folder.Path("a.kx"), "/srv/b.kx"));
    EXPECT_EQ(configuration.logLevel, 2);
}

// ---- columns

TEST_F(ConfigurationTest, FiveWidthsLeaveTheLastTwoAt120) {
    EXPECT_THAT(Columns("10 20 30 40 50"), ElementsAre(10, 20, 30, 40, 50, 120, 120));
}

TEST_F(ConfigurationTest, SixWidthsLeaveTheLastAt120) {
    EXPECT_THAT(Columns("10 20 30 40 50 60"), ElementsAre(10, 20, 30, 40, 50, 60, 120));
}

TEST_F(ConfigurationTest, OnlyZerosMeanAllWidths60) {
    EXPECT_THAT(Columns("0 0 0 0 0 0 0"), ElementsAre(60, 60, 60, 60, 60, 60, 60));
}

TEST_F(ConfigurationTest, FiveZerosAreNotOnlyZeros) {
    EXPECT_THAT(Columns("0 0 0 0 0"), ElementsAre(0, 0, 0, 0, 0, 120, 120));
}

TEST_F(ConfigurationTest, WidthsBehindAWordAreNotRead) {
    EXPECT_THAT(Columns("10 x 30"), ElementsAre(10, 0, 0, 0, 0, 120, 120));
    EXPECT_THAT(Columns("x"), ElementsAre(0, 0, 0, 0, 0, 120, 120));
}

TEST_F(ConfigurationTest, WidthsAreAppended) {
    KalvexConfiguration configuration;
    configuration.columnWidths = {1};
    m_store.ReadColumns(configuration);
    EXPECT_THAT(configuration.columnWidths, ElementsAre(1, 60, 60, 60, 60, 60, 60, 60));
}

TEST_F(ConfigurationTest, FirstSevenWidthsAreWritten) {
    KalvexConfiguration configuration;
    configuration.columnWidths = {1, 2, 3, 4, 5, 6, 7, 8};
    m_store.WriteColumns(configuration);
    EXPECT_EQ(Content(), "[Okna]\r\nSzerokości kolumn=1 2 3 4 5 6 7\r\n");
}

TEST_F(ConfigurationTest, NoWidthsAndOnlyZerosAreWrittenAsNothing) {
    for (const std::vector<unsigned int>& widths :
         {std::vector<unsigned int>(), std::vector<unsigned int>(7, 0)}) {
        Put("[Okna]\r\nSzerokości kolumn=1 2 3 4 5 6 7\r\n");
        KalvexConfiguration configuration;
        configuration.columnWidths = widths;
        m_store.WriteColumns(configuration);
        EXPECT_EQ(Content(), "[Okna]\r\nSzerokości kolumn=\r\n");
    }
}

// ---- log level

TEST_F(ConfigurationTest, TransmissionIsNeverKept) {
    KalvexConfiguration configuration;
    for (const auto& [level, kept] : {std::pair{0, 0}, {1, 1}, {2, 2}, {3, 1}, {4, 4}}) {
        configuration.logLevel = level;
        m_store.WriteLogLevel(configuration);
        EXPECT_EQ(m_profile.GetProfileIntEx("Log", "Rodzaj", -1), kept);
    }
}

TEST_F(ConfigurationTest, NumberThatCannotBeReadStaysUntilTheSettingIsAnotherOne) {
    const std::string profile =
        "[Okna]\r\nIkona w pasku zadan=tak\r\nCzęstotliwość odświeżania=250 ms\r\n"
        "Szerokości kolumn=10 x 30\r\n[Log]\r\nRodzaj=dwa\r\n";
    Put(profile);
    KalvexConfiguration configuration = Read();
    EXPECT_TRUE(m_store.WriteLogLevel(configuration));
    m_store.WriteApplication(configuration);
    m_store.WriteColumns(configuration);
    EXPECT_EQ(Content().substr(0, profile.size()), profile);
    configuration.trayIcon = false;
    configuration.refreshPeriod = 300;
    configuration.columnWidths[1] = 20;
    configuration.logLevel = 2;
    m_store.WriteApplication(configuration);
    m_store.WriteColumns(configuration);
    const std::string changed =
        "[Okna]\r\nIkona w pasku zadan=0\r\nCzęstotliwość odświeżania=300\r\n"
        "Szerokości kolumn=10 20 0 0 0 120 120\r\n[Log]\r\nRodzaj=2\r\n";
    EXPECT_EQ(Content().substr(0, changed.size()), changed);
}

TEST_F(ConfigurationTest, ConsoleClientReadsAndWritesNoLogLevel) {
    Put("[Log]\r\nRodzaj=2\r\n");
    KalvexConfiguration configuration;
    m_clientStore.ReadLogLevel(configuration);
    EXPECT_EQ(configuration.logLevel, 65535);
    configuration.logLevel = 1;
    m_clientStore.WriteLogLevel(configuration);
    EXPECT_EQ(Content(), "[Log]\r\nRodzaj=2\r\n");
}

// ---- scripts to start

TEST_F(ConfigurationTest, ScriptBehindAGapIsNotReadAndGoesWithTheNextWrite) {
    Put("[Autostart]\r\nProcedura0=a.kx\r\nProcedura1=b.kx\r\nProcedura3=d.kx\r\n[Log]\r\n");
    KalvexConfiguration configuration = Read();
    EXPECT_THAT(configuration.autostart, ElementsAre(m_folder.Path("a.kx"), m_folder.Path("b.kx")));
    m_store.WriteApplication(configuration);
    EXPECT_THAT(
        m_profile.GetProfileSectionEx("Autostart"),
        ElementsAre(testing::Pair("Procedura0", "a.kx"), testing::Pair("Procedura1", "b.kx")));
}

TEST_F(ConfigurationTest, ScriptsAreReadByTheirNumbersAndOfTwoTheFirst) {
    Put("[Autostart]\r\nprocedura1=b.kx\r\nProcedura1=c.kx\r\nProcedura0=a.kx\r\n"
        "Procedura02=d.kx\r\nProcedura+2=e.kx\r\nProcedura=f.kx\r\n");
    EXPECT_THAT(Read().autostart, ElementsAre(m_folder.Path("a.kx"), m_folder.Path("b.kx")));
}

TEST_F(ConfigurationTest, EmptyValueEndsTheScripts) {
    Put("[Autostart]\r\nProcedura0=\r\nProcedura1=b.kx\r\n");
    EXPECT_THAT(Read().autostart, IsEmpty());
}

TEST(ConfigurationSourceFieldTest, IsOneFieldOfALine) {
    for (const char* text : {"Gaz", "a b", "a;b", "\xb9"}) EXPECT_TRUE(IsSourceField(text)) << text;
    for (const char* text : {"", ",", "a,b", "a\n", "\ra"})
        EXPECT_FALSE(IsSourceField(text)) << text;
}

TEST_F(ConfigurationTest, FontOfTheLogIsKept) {
    EXPECT_EQ(m_store.ReadLogFont(), "");
    m_store.WriteLogFont(text::FromUtf8("Żółty Mono,11,-1,5"));
    EXPECT_EQ(Content(), "[Okna]\r\nCzcionka Logu=Żółty Mono,11,-1,5\r\n");
    EXPECT_EQ(text::ToUtf8(m_store.ReadLogFont()), "Żółty Mono,11,-1,5");
}

TEST_F(ConfigurationTest, ApplicationSettingsAreWritten) {
    KalvexConfiguration configuration;
    configuration.moduleName = "x";
    configuration.trayIcon = false;
    configuration.refreshPeriod = 500;
    configuration.autostart = {m_folder.Path("stacja/a.kx"), "/srv/b.kx"};
    configuration.logLevel = 3;
    configuration.configurationRight = "5";
    configuration.controlRight = "7";
    m_store.WriteApplication(configuration);
    EXPECT_EQ(Content(),
              "[Okna]\r\n"
              "Ikona w pasku zadan=0\r\n"
              "Częstotliwość odświeżania=500\r\n"
              "\r\n"
              "[Autostart]\r\n"
              "Procedura0=stacja/a.kx\r\n"
              "Procedura1=/srv/b.kx\r\n"
              "\r\n"
              "[Log]\r\n"
              "Rodzaj=1\r\n"
              "\r\n"
              "[Konfiguracja]\r\n"
              "Poziom uprawnień do konfiguracji=5\r\n"
              "Poziom uprawnień do sterowania procedurą=7\r\n");
}

// ---- sources

// "haslo" in the old form: h 68, a 61, s 73, l 6C, o 6F, each the low digit, then the high one.
constexpr const char* kOldPassword = "(&!&#',&/&";

TEST_F(ConfigurationTest, SourceHasNameUserAndPassword) {
    EXPECT_THAT(Source(std::string("srv,jan,") + kOldPassword), ElementsAre("srv", "jan", "haslo"));
}

TEST_F(ConfigurationTest, OldFormReachesEveryByte) {
    // Each digit above the blank: 00 is two blanks, FF two slashes.
    EXPECT_THAT(Source("srv,jan,//#"), ElementsAre("srv", "jan", "\xFF"));
    EXPECT_THAT(Source("srv,jan,!(,,"), ElementsAre("srv", "jan", "\x81\xCC"));
}

TEST_F(ConfigurationTest, PasswordTextMayHoldCommas) {
    // "L" is 4C: the digit C is written as a comma.
    EXPECT_THAT(Source("srv,jan,,$,$"), ElementsAre("srv", "jan", "LL"));
}

TEST_F(ConfigurationTest, SourceWithoutACommaHasNoName) {
    EXPECT_THAT(Source("srv"), ElementsAre("", "", ""));
}

TEST_F(ConfigurationTest, SourceWithOneCommaHasANameOnly) {
    EXPECT_THAT(Source("srv,jan"), ElementsAre("srv", "", ""));
}

TEST_F(ConfigurationTest, CommaInFirstPlaceEndsTheSplitting) {
    EXPECT_THAT(Source(std::string(",jan,") + kOldPassword), ElementsAre("", "", ""));
    EXPECT_THAT(Source(std::string("srv,,") + kOldPassword), ElementsAre("srv", "", ""));
}

TEST_F(ConfigurationTest, SourcesEndAtTheFirstGap) {
    Put("[Zrodla]\r\nZrodlo0=a,\r\nZrodlo1=b\r\nZrodlo3=d,\r\n");
    const KalvexConfiguration configuration = Read();
    ASSERT_THAT(configuration.sources, SizeIs(2));
    EXPECT_EQ(configuration.sources[0].name, "a");
    EXPECT_EQ(configuration.sources[1].name, "");
}

TEST_F(ConfigurationTest, OldPasswordIsWrittenProtectedAndReadsBack) {
    Put(std::string("[Zrodla]\r\nZrodlo0=srv,jan,") + kOldPassword + "\r\nZrodlo7=x\r\n");
    m_store.EditSources(AsTheyAre);
    const platform::ProfileEntries lines = m_profile.GetProfileSectionEx("Zrodla");
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_EQ(lines[0].first, "Zrodlo0");
    EXPECT_EQ(lines[0].second.substr(0, 13), "srv,jan,{kx1}");
    const KalvexConfiguration again = Read();
    ASSERT_THAT(again.sources, SizeIs(1));
    EXPECT_EQ(m_crypt.DecryptText(again.sources[0].password), "haslo");
}

TEST_F(ConfigurationTest, PasswordInTheProfileIsBoundToItsUse) {
    const std::string password = m_crypt.EncryptText("haslo");
    Put("[Zrodla]\r\nZrodlo0=srv,jan," + password + "\r\n");
    const KalvexConfiguration configuration = Read();
    ASSERT_THAT(configuration.sources, SizeIs(1));
    EXPECT_EQ(configuration.sources[0].user, "jan");
    EXPECT_EQ(configuration.sources[0].password, password);
    EXPECT_TRUE(configuration.sources[0].lost);
}

// ---- passwords whose key is missing

class ConfigurationLostKeyTest : public ConfigurationTest {
  protected:
    // The profile has a password in the old form and one whose key is gone.
    ConfigurationLostKeyTest() {
        const platform::CCrypt gone(m_folder.Path("dawny.key"), platform::KeyFile::MadeAtFirstUse);
        m_sealed = *gone.EncryptTextWithLabel("Kalvex", "tajne");
        Put(std::string("[Zrodla]\r\nZrodlo0=stare,jan,") + kOldPassword + "\r\nZrodlo1=srv,ewa," +
            m_sealed + "\r\n");
    }

    std::string m_sealed;
};

TEST_F(ConfigurationLostKeyTest, NoKeyIsMadeAndNoPasswordBecomesEmpty) {
    const KalvexConfiguration configuration = Read();
    EXPECT_FALSE(m_folder.Has("Kalvex.key"));
    ASSERT_THAT(configuration.sources, SizeIs(2));
    EXPECT_EQ(m_crypt.DecryptText(configuration.sources[0].password), "haslo");
    EXPECT_EQ(configuration.sources[1].password, m_sealed);
    EXPECT_FALSE(configuration.sources[0].lost);
    EXPECT_TRUE(configuration.sources[1].lost);
}

TEST_F(ConfigurationLostKeyTest, SourcesAreNotWrittenOver) {
    const std::string before = Content();
    EXPECT_FALSE(m_store.EditSources([](std::vector<sources::CSourceDesc>& sources) {
        sources.clear();
        return true;
    }));
    EXPECT_EQ(Content(), before);
    EXPECT_FALSE(m_folder.Has("Kalvex.key"));
}

TEST_F(ConfigurationLostKeyTest, WithAnotherKeyThePasswordStaysInItsForm) {
    platform::CCrypt(m_folder.Path("Kalvex.key"), platform::KeyFile::MadeAtFirstUse)
        .EncryptText("");
    EXPECT_TRUE(m_store.EditSources([](std::vector<sources::CSourceDesc>& sources) {
        sources[0].user = "ola";
        return true;
    }));
    EXPECT_EQ(m_profile.GetProfileStringEx("Zrodla", "Zrodlo1"), "srv,ewa," + m_sealed);
    EXPECT_THAT(m_profile.GetProfileStringEx("Zrodla", "Zrodlo0"),
                testing::StartsWith("stare,ola,{kx1}"));
}

TEST_F(ConfigurationLostKeyTest, SourceIsNamedWithItsFileItsKeyAndTheKeyFile) {
    const platform::Translator translator;
    std::vector<std::string> faults =
        m_store.FindFaults(Read(), m_folder.Path("Kalvex.ini"), translator);
    ASSERT_THAT(faults, SizeIs(1));
    EXPECT_EQ(text::ToUtf8(faults[0]),
              "Klucz " + m_folder.Path("Kalvex.key") + " nie otwiera hasła z pliku " +
                  m_folder.Path("Kalvex.ini") + " ([Zrodla] Zrodlo1): źródło bez logowania");
}

TEST_F(ConfigurationLostKeyTest, KeyThatOthersCanReadIsTold) {
    m_folder.Put("Kalvex.key", std::string(32, 'k'));
    ASSERT_EQ(::chmod(m_folder.Path("Kalvex.key").c_str(), 0646), 0);
    const platform::Translator translator;
    std::vector<std::string> faults =
        m_store.FindFaults(Read(), m_folder.Path("Kalvex.ini"), translator);
    ASSERT_THAT(faults, SizeIs(2));
    EXPECT_EQ(text::ToUtf8(faults[0]),
              "Do pliku " + m_folder.Path("Kalvex.key") +
                  ", który ma być tajny, mają dostęp inni (prawa 646, a mają być 600)");
}

TEST_F(ConfigurationTest, ReasonOfAFileThatCannotBeReadIsInTheLanguageOfTheModule) {
    const std::string common = m_folder.Put("sorvane.ini", std::string("[Log]\0", 6));
    const support::EnvironmentScope path("SORVANE_COMMON_PROFILE", common);
    EXPECT_THAT(
        m_store.FindFaults(Read(), m_folder.Path("Kalvex.ini"), support::MarkingTranslator()),
        ElementsAre(text::FromUtf8("<Nie można odczytać pliku " + common +
                                   " (<to plik binarny, a nie tekst>)>")));
}

TEST_F(ConfigurationTest, SourcesStayWhenAPasswordCannotBeProtected) {
    const std::string line = std::string("[Zrodla]\r\nZrodlo0=srv,jan,") + kOldPassword + "\r\n";
    Put(line);
    const platform::CCrypt crypt(m_folder.Path("nie/ma.key"), platform::KeyFile::MadeAtFirstUse);
    ConfigurationStore store(m_profile, crypt, m_paths, false);
    EXPECT_FALSE(store.EditSources(AsTheyAre));
    EXPECT_EQ(Content(), line);
}

TEST_F(ConfigurationTest, RootFolderIsTheWorkingDirectoryUnlessThereIsAnother) {
    EXPECT_EQ(ReadRootFolder(m_profile, "/srv/kalvex"), "/srv/kalvex");
    Put("[Konfiguracja]\r\nKatalog główny=dane\r\n");
    EXPECT_EQ(ReadRootFolder(m_profile, "/srv/kalvex"), "/srv/kalvex/dane");
    Put("[Konfiguracja]\r\nKatalog główny=/var/lib/dane\r\n");
    EXPECT_EQ(ReadRootFolder(m_profile, "/srv/kalvex"), "/var/lib/dane");
    Put("[Konfiguracja]\r\nKatalog główny=dane\\gaz\\..\\woda\r\n");
    EXPECT_EQ(ReadRootFolder(m_profile, "/srv/kalvex"), "/srv/kalvex/dane/woda");
}

}  // namespace
}  // namespace kalvex::app
