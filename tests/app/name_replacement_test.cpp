#include "app/NameReplacement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <sstream>

#include "app_fakes.h"
#include "support/marking_translator.h"
#include "support/script_world.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NameReplacementListTest : public testing::Test {
  protected:
    bool Load(std::string_view text) {
        m_folder.Put("nazwy.txt", text::FromUtf8(text));
        return m_list.Load(m_folder.Path("nazwy.txt"), [this](const CNameReplaceRecord& record) {
            m_repeated.push_back(record.fields[0] + "@" + record.fields[1]);
        });
    }

    // The new name and what stands behind it.
    std::string Look(const char* source, const char* variable) {
        std::string name = "-";
        std::string spare = "-";
        const bool found = m_list.Lookup(source, variable, name, spare);
        return (found ? "found " : "none ") + name + " " + spare;
    }

    support::ScratchFolder m_folder;
    NameList m_list;
    std::vector<std::string> m_repeated;
};

TEST_F(NameReplacementListTest, ARecordIsALineWithTabs) {
    EXPECT_TRUE(Load("gaz\tP1\tCISN_1\tzapas\t4\t5\t6\r\nwoda\tP1\tPOZIOM\r\n"));
    EXPECT_EQ(m_list.Count(), 2U);
    EXPECT_EQ(Look("gaz", "P1"), "found CISN_1 zapas");
    EXPECT_EQ(Look("woda", "P1"), "found POZIOM ");
}

TEST_F(NameReplacementListTest, NamesAreComparedAsTheyStand) {
    Load("gaz\tP1\tCISN_1\n");
    EXPECT_EQ(Look("gaz", "p1"), "none - -");
    EXPECT_EQ(Look("GAZ", "P1"), "none - -");
    EXPECT_EQ(Look("P1", "gaz"), "none - -");
}

TEST_F(NameReplacementListTest, ALineWithFewerThanThreeFieldsIsNoRecord) {
    EXPECT_TRUE(Load("gaz\tP1\n\ngaz\n\t\ngaz\tP2\t\n"));
    EXPECT_EQ(m_list.Count(), 0U);
}

TEST_F(NameReplacementListTest, TwoTabsMakeAnEmptyField) {
    Load("gaz\t\tA\tb\ngaz\tP1\t\tc\nwoda\tP1\t\t\n");
    EXPECT_EQ(Look("gaz", ""), "found A b");
    EXPECT_EQ(Look("gaz", "P1"), "found  c");
    EXPECT_EQ(Look("woda", "P1"), "found  ");
    EXPECT_EQ(m_list.Count(), 3U);
}

TEST_F(NameReplacementListTest, TheFirstFieldIsEmptyBehindTwoTabsOnly) {
    Load("\tgaz\tP1\tA\n\t\tP2\tB\n");
    EXPECT_EQ(Look("gaz", "P1"), "found A ");
    EXPECT_EQ(Look("", "P2"), "found B ");
}

TEST_F(NameReplacementListTest, OfTwoRecordsTheFirstStays) {
    EXPECT_TRUE(Load("gaz\tP1\tA\ngaz\tP1\tB\ngaz\tP1\tC\ngaz\tP2\tD"));
    EXPECT_EQ(m_list.Count(), 2U);
    EXPECT_EQ(Look("gaz", "P1"), "found A ");
    EXPECT_EQ(Look("gaz", "P2"), "found D ");
    EXPECT_THAT(m_repeated, ElementsAre("gaz@P1", "gaz@P1"));
}

TEST_F(NameReplacementListTest, ARecordIsUsedOnceItHasBeenFound) {
    Load("gaz\tP1\tA\ngaz\tP2\tB\n");
    Look("gaz", "P2");
    EXPECT_FALSE(m_list.Records().at("gaz/P1").used);
    EXPECT_TRUE(m_list.Records().at("gaz/P2").used);
    Load("gaz\tP2\tB\n");
    EXPECT_FALSE(m_list.Records().at("gaz/P2").used);
}

TEST_F(NameReplacementListTest, AListTakesThePlaceOfTheOneBefore) {
    Load("gaz\tP1\tA\n");
    Load("gaz\tP2\tB\n");
    EXPECT_EQ(Look("gaz", "P1"), "none - -");
    EXPECT_FALSE(m_list.Load(m_folder.Path("brak.txt"), {}));
    EXPECT_EQ(m_list.Count(), 0U);
}

// Opens the scripts as documents without a window.
class DocumentDesk final : public RenamingDesk {
  public:
    explicit DocumentDesk(const engine::DocumentServices& services) : m_services(services) {}

    std::optional<std::string> AskForFile(std::string_view asked) override {
        filter = text::ToUtf8(asked);
        return file;
    }
    std::optional<std::string> AskForFolder(std::string_view asked) override {
        title = text::ToUtf8(asked);
        return folder;
    }
    std::unique_ptr<RenamedScript> Open(const std::string& path, std::string& error) override;

    std::optional<std::string> file;
    std::optional<std::string> folder;
    std::string filter;
    std::string title;
    std::string saveError;
    std::function<void()> whenSaved = [] {};
    int open = 0;

  private:
    const engine::DocumentServices& m_services;
};

class OpenDocument final : public RenamedScript {
  public:
    OpenDocument(const engine::DocumentServices& services, DocumentDesk& desk)
        : document(services), m_desk(desk) {
        ++m_desk.open;
    }
    ~OpenDocument() override { --m_desk.open; }
    OpenDocument(const OpenDocument&) = delete;
    OpenDocument& operator=(const OpenDocument&) = delete;

    engine::ScriptText& Text() override { return document.Text(); }
    bool Save(std::string& error) override {
        m_desk.whenSaved();
        error = m_desk.saveError;
        return error.empty() && document.Save(error);
    }

    engine::CKalvexDoc document;

  private:
    DocumentDesk& m_desk;
};

std::unique_ptr<RenamedScript> DocumentDesk::Open(const std::string& path, std::string& error) {
    auto script = std::make_unique<OpenDocument>(m_services, *this);
    if (!script->document.Open(text::FromUtf8(path), error)) return nullptr;
    return script;
}

constexpr const char* kWarning =
    "message Wszystkie zmiany globalne w skryptach zostaną wykonane nieodwracalnie.";
constexpr const char* kDone =
    "message Zamiana nazw zmiennych została wykonana. Szczegółowe informacje znajdują się w pliku "
    "Kalvex_Replace.log";

class NameReplacementTest : public support::ScriptWorld {
  protected:
    NameReplacementTest() {
        folder.MakeFolder("skrypty");
        m_desk.file = folder.Path("nazwy.txt");
        m_desk.folder = folder.Path("skrypty");
        folder.Put("nazwy.txt", "gaz\tP1\tCISN_1\ngaz\tP2\tCISN_2\n");
    }

    void Run() {
        NameReplacement({clock, translator, log, m_window, m_desk, m_logFolder.Path()}).Run();
        EXPECT_EQ(m_desk.open, 0);
    }

    // The script's text behind the run, its line ends LF.
    std::string Renamed(const std::string& text) {
        WriteFile("skrypty/a.kx", text);
        Run();
        return Script("a.kx");
    }
    std::string Script(const std::string& name) const {
        std::string text = text::ToUtf8(folder.Get("skrypty/" + name));
        std::erase(text, '\r');
        return text;
    }

    // The lines of the renaming's log, the folder of the scripts left out.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::istringstream file(m_logFolder.Get("Kalvex_Replace.log"));
        for (std::string line; std::getline(file, line);) lines.push_back(Shortened(line));
        return lines;
    }
    std::string Shortened(std::string line) const {
        const std::string root = folder.Path() + '/';
        for (std::size_t at = line.find(root); at != std::string::npos; at = line.find(root)) {
            line.erase(at, root.size());
        }
        return line;
    }
    // The lines between the first and the last.
    std::vector<std::string> Body() const {
        std::vector<std::string> lines = Lines();
        if (lines.size() < 2) return {};
        EXPECT_EQ(lines.front(),
                  "Polecenie zastąpienia nazw zmiennych w skryptach. Plik z definicją nazw - "
                  "nazwy.txt");
        EXPECT_EQ(lines.back(), "");
        return {lines.begin() + 1, lines.end() - 1};
    }

    support::ScratchFolder m_logFolder;
    Record m_record;
    FakeWindow m_window{m_record};
    DocumentDesk m_desk{services};
};

TEST_F(NameReplacementTest, ADeclarationGetsTheNewName) {
    EXPECT_EQ(Renamed("REMOTE A gaz@P1\nA = 1\n"), "REMOTE A gaz@CISN_1\nA = 1\n");
    EXPECT_THAT(m_record, ElementsAre(kWarning, kDone));
    EXPECT_THAT(Body(), ElementsAre("Skrypt: skrypty/a.kx",
                                    "Zamiana nazwy zmiennej P1 (źródło gaz) na CISN_1"));
}

TEST_F(NameReplacementTest, FileAndFolderAreAskedFor) {
    Run();
    EXPECT_EQ(m_desk.filter, "Zmienne (*.txt)|*.txt|Wszystkie pliki (*.*)|*.*||");
    EXPECT_EQ(m_desk.title, "Zmiany globalne w skryptach - wybór katalogu");
}

TEST_F(NameReplacementTest, TheWholeLineIsWrittenAnew) {
    EXPECT_EQ(Renamed("\t remote  A\tgaz@P2 ; ciśnienie\nEND\n"), "REMOTE A gaz@CISN_2\nEND\n");
}

TEST_F(NameReplacementTest, ADeclarationOnTheLastLineIsEnded) {
    EXPECT_EQ(Renamed("REMOTE A gaz@P1"), "REMOTE A gaz@CISN_1\n");
}

TEST_F(NameReplacementTest, AQuotedAddressStaysQuoted) {
    folder.Put("nazwy.txt", "gaz\tP 1\tCISN 1\n");
    EXPECT_EQ(Renamed("REMOTE A \"gaz@P 1\"\n"), "REMOTE A \"gaz@CISN 1\"\n");
}

TEST_F(NameReplacementTest, WhatStandsBehindTheFirstSignIsTheName) {
    folder.Put("nazwy.txt", "gaz\tP@1\tX\n");
    EXPECT_EQ(Renamed("REMOTE A gaz@P@1\n"), "REMOTE A gaz@X\n");
}

TEST_F(NameReplacementTest, OtherLinesAndNamesStay) {
    const std::string text =
        "; REMOTE A gaz@P1\nREMOTE A gaz@p1\nREMOTE B woda@P1\nLOCAL REMOTE\n\nREMOTES C gaz@P1\n";
    EXPECT_EQ(Renamed(text), text);
    EXPECT_THAT(Body(), ElementsAre("Skrypt: skrypty/a.kx", "\tBrak zmian"));
}

TEST_F(NameReplacementTest, ADeclarationThatIsIncompleteIsTold) {
    const std::string text =
        "REMOTE\nREMOTE A\nREMOTE A gaz\nREMOTE A @P1\nREMOTE A gaz@\nREMOTE A \"";
    EXPECT_EQ(Renamed(text), text);
    EXPECT_THAT(Body(), ElementsAre("Skrypt: skrypty/a.kx",  //
                                    "Skrypt: Błąd w \"skrypty/a.kx\" w 1 linii.",
                                    "Skrypt: Błąd w \"skrypty/a.kx\" w 2 linii.",
                                    "Skrypt: Błąd w \"skrypty/a.kx\" w 3 linii.",
                                    "Skrypt: Błąd w \"skrypty/a.kx\" w 4 linii.",
                                    "Skrypt: Błąd w \"skrypty/a.kx\" w 5 linii.",
                                    "Skrypt: Błąd w \"skrypty/a.kx\" w 6 linii.", "\tBrak zmian"));
}

TEST_F(NameReplacementTest, NamesOutsideASCIIComeThrough) {
    folder.Put("nazwy.txt", text::FromUtf8("gaz\tŻABA\tŁĄKA\n"));
    EXPECT_EQ(Renamed("REMOTE Ź gaz@ŻABA\n"), "REMOTE Ź gaz@ŁĄKA\n");
    EXPECT_THAT(Body(), ElementsAre("Skrypt: skrypty/a.kx",
                                    "Zamiana nazwy zmiennej ŻABA (źródło gaz) na ŁĄKA"));
}

TEST_F(NameReplacementTest, AListInUtf8IsToldBeforeTheFolderIsAskedFor) {
    folder.Put("nazwy.txt", "gaz\tP1\tX\ngaz\tŻABA\tŁĄKA\n");
    m_desk.folder.reset();
    Run();
    const std::string list = folder.Path("nazwy.txt");
    EXPECT_THAT(m_record,
                ElementsAre(kWarning, "message " + list +
                                          ":2: plik jest w UTF-8, a jest czytany w kodzie "
                                          "Windows-1250; zamieni go polecenie: kalvex-convert " +
                                          list));
}

TEST_F(NameReplacementTest, TheDeepestFoldersComeFirst) {
    for (const char* name : {"skrypty/b", "skrypty/b/c", "skrypty/.ukryty"}) {
        folder.MakeFolder(name);
    }
    for (const char* name : {"z.kx", "a.KX", "b/m.Kx", "b/c/n.kX", ".ukryty/o.kx", "a.txt", "kx"}) {
        WriteFile(std::string("skrypty/") + name, "REMOTE A gaz@P1\n");
    }
    Run();
    std::vector<std::string> scripts;
    for (const std::string& line : Body()) {
        if (line.starts_with("Skrypt: ")) scripts.push_back(line);
    }
    EXPECT_THAT(scripts, ElementsAre("Skrypt: skrypty/.ukryty/o.kx", "Skrypt: skrypty/b/c/n.kX",
                                     "Skrypt: skrypty/b/m.Kx", "Skrypt: skrypty/a.KX",
                                     "Skrypt: skrypty/z.kx"));
    EXPECT_EQ(Script("b/c/n.kX"), "REMOTE A gaz@CISN_1\n");
    EXPECT_EQ(Script("a.txt"), "REMOTE A gaz@P1\n");
}

TEST_F(NameReplacementTest, ALinkToAFolderIsNotFollowed) {
    std::filesystem::create_directory_symlink(folder.Path("skrypty"), folder.Path("skrypty/wkoło"));
    EXPECT_EQ(Renamed("REMOTE A gaz@P1\n"), "REMOTE A gaz@CISN_1\n");
    EXPECT_EQ(Body().size(), 2U);
}

TEST_F(NameReplacementTest, WithoutScriptsTheLogHasItsHeadAlone) {
    Run();
    EXPECT_THAT(Body(), IsEmpty());
    EXPECT_EQ(Lines().size(), 2U);
    EXPECT_THAT(m_record, ElementsAre(kWarning, kDone));
}

TEST_F(NameReplacementTest, WithoutAListNothingIsDone) {
    m_desk.file.reset();
    EXPECT_EQ(Renamed("REMOTE A gaz@P1\n"), "REMOTE A gaz@P1\n");
    m_desk.file = folder.Path("brak.txt");
    Run();
    const std::string fault = "message Błąd ładowania pliku zamiany zmiennych";
    EXPECT_THAT(m_record, ElementsAre(kWarning, fault, kWarning, fault));
    EXPECT_FALSE(m_logFolder.Has("Kalvex_Replace.log"));
}

TEST_F(NameReplacementTest, WithoutRecordsNothingIsDone) {
    folder.Put("nazwy.txt", "gaz\tP1\n");
    Run();
    EXPECT_THAT(m_record, ElementsAre(kWarning, "message Brak poprawnych definicji zamiany nazw"));
    EXPECT_EQ(m_desk.title, "");
}

TEST_F(NameReplacementTest, WithoutAFolderNothingIsDone) {
    m_desk.folder.reset();
    Run();
    EXPECT_THAT(m_record, ElementsAre(kWarning));
    EXPECT_FALSE(m_logFolder.Has("Kalvex_Replace.log"));
}

TEST_F(NameReplacementTest, ARecordThatIsThereTwiceIsToldAtOnce) {
    folder.Put("nazwy.txt", text::FromUtf8("gaz\tŻ\tA\ngaz\tŻ\tB\ngaz\tŻ\tC\n"));
    EXPECT_EQ(Renamed("REMOTE A gaz@Ż\n"), "REMOTE A gaz@A\n");
    const std::string repeated = "message Powtórzona pozycja w pliku gaz@Ż";
    EXPECT_THAT(m_record, ElementsAre(kWarning, repeated, repeated, kDone));
}

TEST_F(NameReplacementTest, AScriptThatDoesNotOpenIsToldAndPassedOver) {
    std::filesystem::create_symlink("nigdzie", folder.Path("skrypty/0.kx"));
    EXPECT_EQ(Renamed("REMOTE A gaz@P1\n"), "REMOTE A gaz@CISN_1\n");
    const std::string fault = "Nie można otworzyć pliku skrypty/0.kx (No such file or directory)";
    EXPECT_THAT(Body(), ElementsAre(fault, "Skrypt: skrypty/a.kx",
                                    "Zamiana nazwy zmiennej P1 (źródło gaz) na CISN_1"));
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_EQ(log.lines[0].first, platform::LogErrors);
    EXPECT_EQ(Shortened(log.lines[0].second), fault);
}

TEST_F(NameReplacementTest, AScriptThatCannotBeSavedIsTold) {
    m_desk.saveError = "No space left on device";
    EXPECT_EQ(Renamed("REMOTE A gaz@P1\n"), "REMOTE A gaz@P1\n");
    const std::string fault = "Nie można zapisać pliku skrypty/a.kx (No space left on device)";
    EXPECT_THAT(Body(), ElementsAre("Skrypt: skrypty/a.kx",
                                    "Zamiana nazwy zmiennej P1 (źródło gaz) na CISN_1", fault));
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_EQ(Shortened(log.lines[0].second), fault);
}

TEST_F(NameReplacementTest, AFolderThatCannotBeReadIsTold) {
    m_desk.folder = folder.Path("brak");
    Run();
    EXPECT_THAT(Body(), ElementsAre("Nie można odczytać folderu brak (No such file or directory)"));
    EXPECT_THAT(m_record, ElementsAre(kWarning, kDone));
}

TEST_F(NameReplacementTest, WithoutALogNothingIsChanged) {
    m_logFolder.MakeFolder("Kalvex_Replace.log");
    EXPECT_EQ(Renamed("REMOTE A gaz@P1\n"), "REMOTE A gaz@P1\n");
    ASSERT_EQ(m_record.size(), 2U);
    EXPECT_EQ(m_record[1], "message Nie można zapisać pliku rejestru " +
                               m_logFolder.Path("Kalvex_Replace.log") + " (Is a directory)");
}

// While it lives the files of the process do not grow.
class FullDisk {
  public:
    FullDisk() {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_kept);
        const rlimit none{0, m_kept.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_kept); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    rlimit m_kept{};
};

TEST_F(NameReplacementTest, LinesThatTheLogLosesAreCounted) {
    std::optional<FullDisk> full;
    m_desk.whenSaved = [&] { full.emplace(); };
    m_desk.saveError = "No space left on device";
    WriteFile("skrypty/a.kx", "A = 1\n");
    Run();
    full.reset();
    EXPECT_THAT(Lines(), ElementsAre("Polecenie zastąpienia nazw zmiennych w skryptach. Plik z "
                                     "definicją nazw - nazwy.txt",
                                     "Skrypt: skrypty/a.kx", "\tBrak zmian"));
    EXPECT_THAT(m_record, ElementsAre(kWarning, "message Pominięte wiersze rejestru: 2", kDone));
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST_F(NameReplacementTest, LostLinesAreToldWhenTheDiskHasPlaceAgain) {
    std::optional<FullDisk> full;
    m_desk.whenSaved = [&] {
        if (full) {
            full.reset();
            clock.Advance(2000);
        } else {
            full.emplace();
        }
    };
    m_desk.saveError = "No space left on device";
    WriteFile("skrypty/a.kx", "A = 1\n");
    WriteFile("skrypty/b.kx", "A = 1\n");
    Run();
    EXPECT_THAT(Body(),
                ElementsAre("Skrypt: skrypty/a.kx", "\tBrak zmian", "Pominięte wiersze rejestru: 3",
                            "Nie można zapisać pliku skrypty/b.kx (No space left on device)"));
    EXPECT_THAT(m_record, ElementsAre(kWarning, kDone));
}

TEST_F(NameReplacementTest, TheTextsAreTranslated) {
    const support::MarkingTranslator marking;
    WriteFile("skrypty/a.kx", "REMOTE A gaz@P1\nREMOTE\n");
    NameReplacement({clock, marking, log, m_window, m_desk, m_logFolder.Path()}).Run();
    for (const std::string& line : m_record) EXPECT_TRUE(line.starts_with("message <")) << line;
    EXPECT_EQ(m_desk.filter.substr(0, 1), "<");
    EXPECT_EQ(m_desk.title.substr(0, 1), "<");
    EXPECT_EQ(Lines()[2], "<Zamiana nazwy zmiennej P1 (źródło gaz) na CISN_1>");
    EXPECT_EQ(Lines()[3], "<Skrypt: Błąd w \"skrypty/a.kx\" w 2 linii.>");
}

}  // namespace
}  // namespace kalvex::app
