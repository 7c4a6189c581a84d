#include <gmock/gmock.h>

#include <filesystem>

#include "app_fakes.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AppStartTest : public AppTest {
  protected:
    std::string Script(const std::string& name) const { return m_folder.Path(name); }

    static std::string InUtf8(const std::string& file, int line) {
        return file + ':' + std::to_string(line) +
               ": plik jest w UTF-8, a jest czytany w kodzie Windows-1250; zamieni go polecenie: "
               "kalvex-convert " +
               file;
    }

    // How a process that has refused to start tells it.
    void ExpectFault(const std::string& text) {
        EXPECT_EQ(text::ToUtf8(App().GetEnd().text), text);
        EXPECT_EQ(App().ExitInstance(), 1);
    }
};

TEST_F(AppStartTest, ModuleStartsAndStopsInOrder) {
    PutProfile("[Autostart]\nProcedura0=a.kx\n[Zrodla]\nZrodlo0=srv,jan,\n");
    PutScript("a.kx", "LOCAL A = 1\n");
    ASSERT_TRUE(Start());
    m_record.push_back("loop");
    App().OnCloseMainWindow();
    EXPECT_EQ(App().ExitInstance(), 0);
    EXPECT_THAT(
        m_record,
        ElementsAre("primary Kalvex", "lock Kalvex 1", "profile Kalvex.ini", "start Mordex",
                    "start Dorlin", "start Vantrel", "read Konfiguracja/Katalog główny",
                    "read Konfiguracja/Nazwa", "read Zrodla", "read Okna/Ikona w pasku zadan",
                    "read Okna/Częstotliwość odświeżania", "read Autostart",
                    "read Okna/Szerokości kolumn",
                    "read Konfiguracja/Poziom uprawnień do konfiguracji",
                    "read Konfiguracja/Poziom uprawnień do sterowania procedurą", "read Log/Rodzaj",
                    "ticks", "timer 4 1000", "log Uruchomienie modułu Kalvex",
                    "log " + Script("a.kx") + " : Inicjowanie skryptu ",
                    "log " + Script("a.kx") + " : Start skryptu ", "log Poziom rejestracji: błędy ",
                    "read Log", "write Log/Rodzaj", "loop", "quit", "log Zatrzymanie modułu Kalvex",
                    "no ticks", "no timer 4", "stop Vantrel", "stop Dorlin", "stop Mordex"));
}

TEST_F(AppStartTest, WindowIsTitledAndShownWithItsScriptsMinimised) {
    m_hasWindow = true;
    m_users.level = 1;
    PutProfile("[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "LOCAL A = 1\n");
    ASSERT_TRUE(Start());
    EXPECT_THAT(Without({"read", "profile", "primary", "lock", "start", "log"}),
                ElementsAre("ticks", "timer 4 1000", "status Uruchomienie modułu Kalvex",
                            "status " + Script("a.kx") + " : Inicjowanie skryptu ",
                            "status " + Script("a.kx") + " : Start skryptu ", "minimise a.kx",
                            "may close", "show", "title Kalvex",
                            "status Poziom rejestracji: błędy ", "write Log/Rodzaj"));
}

// ---- the command line

TEST_F(AppStartTest, ListOfParametersEndsAProcessWithoutAWindow) {
    EXPECT_FALSE(Start({"/?"}));
    const std::string help = text::ToUtf8(App().GetEnd().text);
    EXPECT_NE(help.find("/P "), std::string::npos);
    EXPECT_NE(help.find("/MIRROR "), std::string::npos);
    EXPECT_THAT(m_record, IsEmpty());
    EXPECT_EQ(App().ExitInstance(), 0);
}

TEST_F(AppStartTest, WindowDecidesWhetherTheListOfParametersEndsTheProcess) {
    m_hasWindow = true;
    EXPECT_FALSE(Start({"/?"}));
    EXPECT_THAT(m_record, ElementsAre("parameters"));
    EXPECT_EQ(m_window.helpShown, CCmdLine::GetHelp(m_translator));
    m_window.answer = false;
    EXPECT_TRUE(Start({"/?", "/NOLOGIN"}));
}

constexpr const char* kOptionC =
    "Opcja  /C nie jest wspierana w tej wersji systemu. Należy zmodyfikować konfigurację systemu "
    "z wykorzystaniem opcji /INST";

TEST_F(AppStartTest, OptionCIsRefused) {
    EXPECT_FALSE(Start({"/C"}));
    EXPECT_THAT(m_record, ElementsAre(std::string("log ") + kOptionC));
    ExpectFault(kOptionC);
}

TEST_F(AppStartTest, OptionCIsRefusedInABoxWhereThereIsAWindow) {
    m_hasWindow = true;
    EXPECT_FALSE(Start({"/C"}));
    EXPECT_THAT(Those("message"), ElementsAre(kOptionC));
}

TEST_F(AppStartTest, OptionXHasNoLastingEffect) {
    ASSERT_TRUE(Start({"/X:50"}));
    EXPECT_EQ(App().GetCloseLevel(), 1);
    EXPECT_EQ(App().Configuration().controlRight, "100");
    m_app->ExitInstance();
    PutProfile("[Konfiguracja]\nPoziom uprawnień do sterowania procedurą=30\n");
    ASSERT_TRUE(Start({"/X:50"}));
    EXPECT_EQ(App().Configuration().controlRight, "30");
}

TEST_F(AppStartTest, UnknownOptionsAreToldInOneLineAndPassedOver) {
    ASSERT_TRUE(Start({"/ZZ", "plik.kx"}));
    EXPECT_THAT(Those("log"), ElementsAre("Uruchomienie modułu Kalvex",
                                          "Pominięte parametry wiersza poleceń: /ZZ plik.kx",
                                          "Poziom rejestracji: błędy "));
}

// ---- roles and instances

TEST_F(AppStartTest, SecondInstanceHasItsOwnNames) {
    PutProfile("[Konfiguracja]\nNazwa=pierwsza\n");
    PutProfile("[Log]\nRodzaj=2\n", "Kalvex2.ini");
    ASSERT_TRUE(Start({"/INST:2"}));
    EXPECT_THAT(Those("lock"), ElementsAre("Kalvex 2"));
    EXPECT_THAT(Those("profile"), ElementsAre("Kalvex2.ini"));
    EXPECT_EQ(App().GetModuleName(), "Kalvex [2]");
    EXPECT_EQ(App().GetClientIdentity(), "Kalvex [2]_stacja");
    App().ExitInstance();
    EXPECT_EQ(FileText("Kalvex2.log"),
              "2024-03-10 07:00:00  Uruchomienie modułu Kalvex [2]\n"
              "2024-03-10 07:00:00  Poziom rejestracji: zdarzenia\n"
              "2024-03-10 07:00:00  Zatrzymanie modułu Kalvex [2]\n");
    EXPECT_FALSE(m_folder.Has("Kalvex.log"));
}

TEST_F(AppStartTest, ProfileNamesTheModule) {
    PutProfile("[Konfiguracja]\nNazwa=Kotłownia\n");
    ASSERT_TRUE(Start({"/INST:2"}));
    EXPECT_EQ(App().GetModuleName(), "Kalvex [2]");
    m_app->ExitInstance();
    ASSERT_TRUE(Start());
    EXPECT_EQ(text::ToUtf8(App().GetModuleName()), "Kotłownia");
    EXPECT_EQ(text::ToUtf8(App().GetClientIdentity()), "Kotłownia_stacja");
}

TEST_F(AppStartTest, TitleHasTheInstance) {
    m_hasWindow = true;
    ASSERT_TRUE(Start({"/INST:2", "/NOLOGIN"}));
    EXPECT_THAT(Those("title"), ElementsAre("Kalvex [2]"));
}

TEST_F(AppStartTest, InstanceThatRunsAlreadyEndsTheProcessSilently) {
    m_hasWindow = true;
    m_instances.lockFree = false;
    EXPECT_FALSE(Start());
    EXPECT_THAT(m_record, ElementsAre("primary Kalvex", "lock Kalvex 1"));
    ExpectFault("");
    EXPECT_THAT(m_record, ElementsAre("primary Kalvex", "lock Kalvex 1"));
}

TEST_F(AppStartTest, LockThatCannotBeHadIsTold) {
    m_instances.lockFree = false;
    m_instances.lockError = "/run/x: Permission denied";
    EXPECT_FALSE(Start());
    ExpectFault("Nie można zablokować instancji (/run/x: Permission denied)");
}

constexpr const char* kNotPrimary =
    "Ten program może być uruchamiany wyłącznie w pierwszej instancji systemu Sorvane";

TEST_F(AppStartTest, ModuleThatIsNotThePrimaryInstanceEnds) {
    m_instances.primary = false;
    m_profile.automaticClient = "0";
    EXPECT_FALSE(Start({"/INST:2"}));
    EXPECT_THAT(m_record, ElementsAre("primary Kalvex", "common AutoRC", "lock Kalvex 2",
                                      "profile Kalvex2.ini", "start Mordex", "start Dorlin",
                                      "start Vantrel", std::string("log ") + kNotPrimary));
    ExpectFault(kNotPrimary);
    EXPECT_EQ(FileText("Kalvex2_d.log"), std::string("2024-03-10 07:00:00  ") + kNotPrimary + "\n");
    EXPECT_FALSE(m_folder.Has("Kalvex2.log"));
    EXPECT_THAT(Those("stop"), ElementsAre("Vantrel", "Dorlin", "Mordex"));
}

TEST_F(AppStartTest, SecondServiceIsNoConsoleClientByItself) {
    m_instances.primary = false;
    m_service = true;
    EXPECT_FALSE(Start({"/INST:2"}));
    EXPECT_FALSE(App().IsConsoleClient());
    ExpectFault(kNotPrimary);
}

TEST_F(AppStartTest, FaultOfThePrimaryInstanceIsShownInABox) {
    m_instances.primary = false;
    m_profile.automaticClient = "0";
    m_hasWindow = true;
    EXPECT_FALSE(Start());
    EXPECT_THAT(Those("message"), ElementsAre(kNotPrimary));
}

constexpr const char* kNoConsole =
    "Ten program nie może pracować jako zdalna konsola innego modułu";

TEST_F(AppStartTest, SecondCopyIsAConsoleClientByItself) {
    m_instances.primary = false;
    PutProfile("[Log]\nRodzaj=1\n");
    EXPECT_FALSE(Start());
    EXPECT_TRUE(App().IsConsoleClient());
    EXPECT_THAT(Those("lock"), ElementsAre("Kalvex_RC 1"));
    EXPECT_THAT(Those("profile"), ElementsAre("Kalvex.ini"));
    EXPECT_EQ(App().GetClientIdentity(), "Kalvex_stacja_RC");
    EXPECT_EQ(App().Log().GetLevel(), 65535);
    ExpectFault(kNoConsole);
}

TEST_F(AppStartTest, ConsoleClientTellsItsRoleAndHasNoLogFile) {
    EXPECT_FALSE(Start({"/RC", "/INST:2"}));
    EXPECT_THAT(Those("primary"), IsEmpty());
    EXPECT_THAT(Those("lock"), ElementsAre("Kalvex_RC 2"));
    EXPECT_THAT(Those("profile"), ElementsAre("Kalvex2.ini"));
    ExpectFault(kNoConsole);
    EXPECT_THAT(Those("log"),
                ElementsAre("RC: Uruchomienie modułu Kalvex [2]",
                            "RC: Moduł uruchomiony w trybie zdalnej konsoli",
                            std::string("RC: ") + kNoConsole, "RC: Zatrzymanie modułu Kalvex [2]"));
    EXPECT_FALSE(m_folder.Has("Kalvex2_rc.log"));
    EXPECT_EQ(FileText("Kalvex2_rc_d.log"),
              std::string("2024-03-10 07:00:00  ") + kNoConsole + "\n");
}

// ---- steps that fail

TEST_F(AppStartTest, LibraryThatDoesNotStartEndsTheProcess) {
    m_dorlin.fault = "brak bazy";
    EXPECT_FALSE(Start());
    ExpectFault("brak bazy");
    EXPECT_THAT(m_record,
                ElementsAre("primary Kalvex", "lock Kalvex 1", "profile Kalvex.ini", "start Mordex",
                            "start Dorlin", "log brak bazy", "stop Mordex"));
    EXPECT_EQ(FileText("Kalvex_d.log"), "2024-03-10 07:00:00  brak bazy\n");
}

TEST_F(AppStartTest, ProfileThatCannotBeReadEndsTheProcess) {
    std::filesystem::create_directory(m_folder.Path("Kalvex.ini"));
    EXPECT_FALSE(Start());
    ExpectFault("Nie można odczytać pliku " + m_folder.Path("Kalvex.ini") + " (Is a directory)");
}

TEST_F(AppStartTest, ProcessWithoutItsTimerEnds) {
    m_loop.refused = {CMainFrame::RefreshTimer};
    EXPECT_FALSE(Start());
    ExpectFault("Nie można uruchomić zegara");
}

// ---- faults that are told and stop nothing

TEST_F(AppStartTest, NumberThatIsNoneIsToldWithItsOption) {
    ASSERT_TRUE(Start({"/INST:abc", "/ZZ"}));
    EXPECT_THAT(
        Those("log"),
        ElementsAre("Uruchomienie modułu Kalvex", "Pominięte parametry wiersza poleceń: /ZZ",
                    "Pominięte parametry wiersza poleceń, które wymagają liczby: /INST:abc",
                    "Poziom rejestracji: błędy "));
}

TEST_F(AppStartTest, CommonProfileThatCannotBeReadIsTold) {
    m_folder.MakeFolder("sorvane.ini");
    m_profile.commonPath = m_folder.Path("sorvane.ini");
    ASSERT_TRUE(Start());
    EXPECT_THAT(Those("log"), ElementsAre("Uruchomienie modułu Kalvex",
                                          "Nie można odczytać pliku " + m_profile.commonPath +
                                              " (Is a directory)",
                                          "Poziom rejestracji: błędy "));
}

TEST_F(AppStartTest, FaultsOfBothProfilesAreToldWithFileLineAndKey) {
    m_profile.commonPath = m_folder.Put("sorvane.ini", "[Konfiguracja]\nAutoRC=tak\n");
    PutProfile("[Autsotart]\nProcedura0=a.kx\n[Log]\nRodzaj=dwa\n");
    ASSERT_TRUE(Start());
    const std::string file = "Plik " + m_folder.Path("Kalvex.ini") + ", wiersz ";
    EXPECT_THAT(
        Those("log"),
        ElementsAre("Uruchomienie modułu Kalvex",
                    file + "1: nieznana sekcja [Autsotart], może chodzi o [Autostart]",
                    file + "4, [Log] Rodzaj: oczekiwano liczby całkowitej od 0 do 3",
                    "Plik " + m_profile.commonPath +
                        ", wiersz 2, [Konfiguracja] AutoRC: oczekiwano liczby całkowitej od 0 do 1",
                    "Poziom rejestracji: błędy "));
    EXPECT_EQ(FileText("Kalvex.ini"), "[Autsotart]\nProcedura0=a.kx\n[Log]\nRodzaj=dwa\n");
}

TEST_F(AppStartTest, BinaryProfileEndsTheProcess) {
    m_folder.Put("Kalvex.ini", std::string("[Log]\0", 6));
    EXPECT_FALSE(Start());
    ExpectFault("Nie można odczytać pliku " + m_folder.Path("Kalvex.ini") +
                " (to plik binarny, a nie tekst)");
}

TEST_F(AppStartTest, ServiceWithoutAScriptTellsSo) {
    m_service = true;
    PutProfile("[Autostart]\nProcedura0=brak.kx\n");
    ASSERT_TRUE(Start());
    EXPECT_THAT(Those("log"), ElementsAre("Uruchomienie modułu Kalvex",
                                          Script("brak.kx") + " : No such file or directory",
                                          "Nie uruchomiono żadnego skryptu (plik " +
                                              m_folder.Path("Kalvex.ini") + ", sekcja [Autostart])",
                                          "Poziom rejestracji: błędy "));
}

TEST_F(AppStartTest, MarkOfUtf8IsToldAndReadPast) {
    m_profile.commonPath = m_folder.Put("sorvane.ini", "\xEF\xBB\xBF[Serwery]\n");
    m_folder.Put("Kalvex.ini", "\xEF\xBB\xBF[Konfiguracja]\nNazwa=Gaz\n");
    ASSERT_TRUE(Start());
    EXPECT_THAT(Those("log"),
                ElementsAre("Uruchomienie modułu Gaz", InUtf8(m_folder.Path("Kalvex.ini"), 1),
                            InUtf8(m_profile.commonPath, 1), "Poziom rejestracji: błędy "));
}

TEST_F(AppStartTest, ProfileInUtf8IsToldWithTheLineThatShowsIt) {
    m_profile.commonPath = m_folder.Put("sorvane.ini", text::FromUtf8("[Serwery]\n; Łącza\n"));
    m_folder.Put("Kalvex.ini", "[Konfiguracja]\nNazwa=Gaz\n; Zażółcenie\n; gęś\n");
    ASSERT_TRUE(Start());
    EXPECT_THAT(Those("log"),
                ElementsAre("Uruchomienie modułu Gaz", InUtf8(m_folder.Path("Kalvex.ini"), 3),
                            "Poziom rejestracji: błędy "));
}

TEST_F(AppStartTest, KeyThatIsMissingBesideAPasswordIsToldAndNotMade) {
    const platform::CCrypt gone(m_folder.Path("dawny.key"), platform::KeyFile::MadeAtFirstUse);
    PutProfile("[Zrodla]\nZrodlo0=srv,jan," + *gone.EncryptTextWithLabel("Kalvex", "x") + "\n");
    ASSERT_TRUE(Start());
    EXPECT_THAT(
        Those("log"),
        ElementsAre("Uruchomienie modułu Kalvex",
                    "Klucz " + m_folder.Path("Kalvex.key") + " nie otwiera hasła z pliku " +
                        m_folder.Path("Kalvex.ini") + " ([Zrodla] Zrodlo0): źródło bez logowania",
                    "Poziom rejestracji: błędy "));
    EXPECT_FALSE(m_folder.Has("Kalvex.key"));
}

TEST_F(AppStartTest, LogThatCannotBeWrittenIsTold) {
    m_folder.MakeFolder("Kalvex.log");
    ASSERT_TRUE(Start());
    const std::string fault =
        "Nie można zapisać pliku rejestru " + m_folder.Path("Kalvex.log") + " (Is a directory)";
    EXPECT_EQ(text::ToUtf8(App().GetLogFault()), fault);
    EXPECT_THAT(Those("log"),
                ElementsAre("Uruchomienie modułu Kalvex", fault, "Poziom rejestracji: błędy "));
}

TEST_F(AppStartTest, LevelThatCannotBeKeptIsTold) {
    ASSERT_TRUE(Start());
    m_folder.MakeFolder("Kalvex.ini.tmp");
    m_record.clear();
    App().SetLogLevel(2);
    EXPECT_THAT(Those("log"), ElementsAre("Poziom rejestracji: zdarzenia",
                                          "Nie można zapisać pliku " + m_folder.Path("Kalvex.ini") +
                                              " (Is a directory): [Log] Rodzaj"));
}

// ---- settings

TEST_F(AppStartTest, RefreshPeriodRestartsItsTimer) {
    PutProfile("[Okna]\nCzęstotliwość odświeżania=250\n");
    ASSERT_TRUE(Start());
    EXPECT_THAT(Those("timer"), ElementsAre("4 1000", "4 250"));
}

TEST_F(AppStartTest, TransmissionLevelDoesNotSurviveARestart) {
    ASSERT_TRUE(Start());
    App().SetLogLevel(3);
    EXPECT_EQ(App().Log().GetLevel(), 3);
    EXPECT_EQ(FileText("Kalvex.ini"), "[Log]\r\nRodzaj=1\r\n");
    App().ExitInstance();
    ASSERT_TRUE(Start());
    EXPECT_EQ(App().Log().GetLevel(), 1);
}

TEST_F(AppStartTest, LinesAboveTheLevelAreNowhere) {
    m_hasWindow = true;
    ASSERT_TRUE(Start({"/NOLOGIN"}));
    m_record.clear();
    App().Log().Log("zdarzenie", platform::LogEvents);
    EXPECT_THAT(m_record, IsEmpty());
    EXPECT_EQ(FileText("Kalvex.log"),
              "2024-03-10 07:00:00  Uruchomienie modułu Kalvex\n"
              "2024-03-10 07:00:00  Poziom rejestracji: błędy \n");
}

TEST_F(AppStartTest, LogFilesAreOpenedAnew) {
    ASSERT_TRUE(Start());
    std::filesystem::rename(m_folder.Path("Kalvex.log"), m_folder.Path("stary"));
    App().ReopenLogFiles();
    App().Log().Log("x", platform::LogErrors);
    EXPECT_EQ(FileText("Kalvex.log"), "2024-03-10 07:00:00  x\n");
}

TEST_F(AppStartTest, LogThatCannotBeWrittenAnyMoreIsToldOnceUntilItCan) {
    ASSERT_TRUE(Start());
    const auto refresh = [this] {
        m_record.clear();
        m_clock.Advance(1000);
        m_loop.Fire(CMainFrame::RefreshTimer);
    };
    refresh();
    EXPECT_EQ(App().GetLogFault(), "");
    std::filesystem::rename(m_folder.Path("Kalvex.log"), m_folder.Path("stary"));
    m_folder.MakeFolder("Kalvex.log");
    m_record.clear();
    App().ReopenLogFiles();
    const std::string fault =
        "Nie można zapisać pliku rejestru " + m_folder.Path("Kalvex.log") + " (Is a directory)";
    EXPECT_EQ(text::ToUtf8(App().GetLogFault()), fault);
    EXPECT_THAT(Those("log"), ElementsAre(fault));
    refresh();
    EXPECT_THAT(Those("log"), IsEmpty());
    std::filesystem::remove(m_folder.Path("Kalvex.log"));
    refresh();
    EXPECT_EQ(App().GetLogFault(), "");
    App().Log().Log("x", platform::LogErrors);
    EXPECT_EQ(FileText("Kalvex.log"),
              "2024-03-10 07:00:03  Pominięte wiersze rejestru: 1\n2024-03-10 07:00:03  x\n");
}

TEST_F(AppStartTest, LogThatLosesLinesIsLookedAt) {
    ASSERT_TRUE(Start());
    std::filesystem::rename(m_folder.Path("Kalvex.log"), m_folder.Path("stary"));
    m_folder.MakeFolder("Kalvex.log");
    App().Log().ReopenLogFile();
    m_loop.Fire(CMainFrame::RefreshTimer);
    EXPECT_EQ(App().GetLogFault(), "");
    App().Log().Log("x", platform::LogErrors);
    m_loop.Fire(CMainFrame::RefreshTimer);
    EXPECT_EQ(
        text::ToUtf8(App().GetLogFault()),
        "Nie można zapisać pliku rejestru " + m_folder.Path("Kalvex.log") + " (Is a directory)");
}

TEST_F(AppStartTest, DataFilesLieWhereTheProfileSays) {
    std::filesystem::create_directory(m_folder.Path("dane"));
    PutProfile("[Konfiguracja]\nKatalog główny=dane\n[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "PRIORITY 1\nLOCAL A = 5\nSET_FILE dane.txt A S\n");
    ASSERT_TRUE(Start());
    EXPECT_EQ(App().Documents().All().front()->Services().paths.GetRootPath(),
              m_folder.Path("dane"));
}

// ---- the scripts to start

TEST_F(AppStartTest, ScriptsStartBeforeTheLoopUnlessTheyAreDelayed) {
    PutProfile("[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "\n");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"/D:0"}, {"/D:-3"}, {"/D:x"}}) {
        ASSERT_TRUE(Start(arguments));
        ASSERT_EQ(App().Documents().All().size(), 1u);
        EXPECT_TRUE(App().Documents().All().front()->State().m_bRunning);
        EXPECT_THAT(Those("timer"), ElementsAre("4 1000"));
        m_app->ExitInstance();
        m_record.clear();
    }
}

TEST_F(AppStartTest, DelayedScriptsStartOnTheirTimerOnce) {
    PutProfile("[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "\n");
    ASSERT_TRUE(Start({"/D:5"}));
    EXPECT_TRUE(App().Documents().All().empty());
    EXPECT_THAT(Those("timer"), ElementsAre("4 1000", "2 5000"));
    m_loop.Fire(CMainFrame::AutoStartTimer);
    EXPECT_EQ(App().Documents().All().size(), 1u);
    EXPECT_FALSE(m_loop.timers.contains(CMainFrame::AutoStartTimer));
}

TEST_F(AppStartTest, ShortestDelayIsASecond) {
    PutProfile("[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "\n");
    ASSERT_TRUE(Start({"/D:1"}));
    EXPECT_TRUE(App().Documents().All().empty());
    EXPECT_THAT(Those("timer"), ElementsAre("4 1000", "2 1000"));
}

TEST_F(AppStartTest, ScriptsStartAtOnceWhereThereIsNoTimerForTheirDelay) {
    m_loop.refused = {CMainFrame::AutoStartTimer};
    PutProfile("[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "\n");
    ASSERT_TRUE(Start({"/D:5"}));
    EXPECT_EQ(App().Documents().All().size(), 1u);
}

TEST_F(AppStartTest, ScriptWhoseFileIsGoneIsPassedOver) {
    PutProfile("[Autostart]\nProcedura0=a.kx\nProcedura1=brak.kx\nProcedura2=c.kx\n");
    PutScript("a.kx", "\n");
    PutScript("c.kx", "\n");
    ASSERT_TRUE(Start());
    ASSERT_EQ(App().Documents().All().size(), 2u);
    EXPECT_EQ(App().Documents().All()[0]->GetDocKey(), "a.kx");
    EXPECT_EQ(App().Documents().All()[1]->GetDocKey(), "c.kx");
    EXPECT_TRUE(App().Documents().All()[1]->State().m_bRunning);
    EXPECT_THAT(
        Those("log"),
        ElementsAre("Uruchomienie modułu Kalvex", Script("a.kx") + " : Inicjowanie skryptu ",
                    Script("a.kx") + " : Start skryptu ",
                    Script("brak.kx") + " : No such file or directory",
                    Script("c.kx") + " : Inicjowanie skryptu ",
                    Script("c.kx") + " : Start skryptu ", "Poziom rejestracji: błędy "));
}

TEST_F(AppStartTest, FolderThatHasNoNameInWindows1250IsTold) {
    m_folder.MakeFolder("漢");
    m_workingDir = m_folder.Path("漢");
    PutProfile("[Autostart]\nProcedura0=a.kx\n", "漢/Kalvex.ini");
    m_folder.Put("漢/a.kx", "\n");
    ASSERT_TRUE(Start());
    EXPECT_THAT(Those("log"),
                ElementsAre("Uruchomienie modułu Kalvex",
                            "Nazwa folderu " + m_folder.Path("?") +
                                " ma znaki spoza Windows-1250, więc jego pliki nie otworzą się",
                            m_folder.Path("?/a.kx") + " : No such file or directory",
                            "Poziom rejestracji: błędy "));
}

TEST_F(AppStartTest, ScriptsThatStartByThemselvesAreMinimised) {
    PutProfile("[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "\n");
    ASSERT_TRUE(Start());
    EXPECT_EQ(App().Documents().All().front()->GetStateWord(),
              engine::StateRunning | engine::StateMinimised);
}

TEST_F(AppStartTest, ScriptThatCannotStartStaysOpen) {
    PutProfile("[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "LOCAL A = 1\nIF A == 1 THEN\n");
    ASSERT_TRUE(Start());
    ASSERT_EQ(App().Documents().All().size(), 1u);
    EXPECT_FALSE(App().Documents().All().front()->State().m_bRunning);
}

// ---- login

TEST_F(AppStartTest, UserIsSplitAtTheFirstColonAndInUpperCase) {
    ASSERT_TRUE(Start({"/U:żaneta:ha:sło"}));
    EXPECT_THAT(Those("register"), ElementsAre("ŻANETA/HA:SŁO"));
}

TEST_F(AppStartTest, UserWithoutAColonIsNobody) {
    ASSERT_TRUE(Start({"/U:adam"}));
    EXPECT_THAT(Those("register"), ElementsAre("/"));
}

TEST_F(AppStartTest, WrongPasswordClosesTheFrameBeforeAnyScriptIsOpened) {
    PutProfile("[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "\n");
    m_users.accepted = false;
    m_hasWindow = true;
    EXPECT_TRUE(Start({"/U:adam:x"}));
    EXPECT_THAT(Those("show"), IsEmpty());
    EXPECT_EQ(Without({"quit"}), m_record);
    m_loop.posted.Run();
    EXPECT_EQ(m_record.back(), "quit");
    EXPECT_TRUE(App().Documents().All().empty());
    ExpectFault("Nie można zalogować użytkownika ADAM");
}

TEST_F(AppStartTest, ProcessThatIsNotInteractiveAsksForNoLogin) {
    m_service = true;
    ASSERT_TRUE(Start());
    EXPECT_THAT(Those("register"), IsEmpty());
    EXPECT_FALSE(App().IsInteractiveMode());
}

TEST_F(AppStartTest, LoginIsAskedForUnlessSomebodyIsThere) {
    m_hasWindow = true;
    ASSERT_TRUE(Start());
    EXPECT_EQ(std::count(m_record.begin(), m_record.end(), "login"), 1);
    EXPECT_EQ(std::count(m_record.begin(), m_record.end(), "may not close"), 1);
    m_app->ExitInstance();
    m_record.clear();
    m_users.level = 1;
    ASSERT_TRUE(Start());
    EXPECT_EQ(std::count(m_record.begin(), m_record.end(), "login"), 0);
}

TEST_F(AppStartTest, NoLoginIsAskedForWithTheOption) {
    m_hasWindow = true;
    ASSERT_TRUE(Start({"/NOLOGIN"}));
    EXPECT_EQ(std::count(m_record.begin(), m_record.end(), "login"), 0);
}

TEST_F(AppStartTest, LoginThatIsGivenUpClosesTheFrame) {
    PutProfile("[Autostart]\nProcedura0=a.kx\n");
    PutScript("a.kx", "\n");
    m_hasWindow = true;
    m_window.answer = false;
    EXPECT_TRUE(Start());
    m_loop.posted.Run();
    EXPECT_EQ(m_record.back(), "quit");
    EXPECT_TRUE(App().Documents().All().empty());
    ExpectFault("");
}

}  // namespace
}  // namespace kalvex::app
