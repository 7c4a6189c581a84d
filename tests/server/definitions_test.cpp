#include "server/Definitions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "server/CsvTable.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "text/CodePage.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class DefinitionsTest : public testing::Test {
  protected:
    bool Load(std::string_view toml) {
        const bool loaded = LoadDefinitions(m_folder.Put("plant.toml", toml),
                                            platform::Translator(), m_definitions, m_errors);
        for (std::string& error : m_errors) {
            for (std::size_t at; (at = error.find(m_folder.Path(""))) != std::string::npos;) {
                error.erase(at, m_folder.Path("").size());
            }
        }
        EXPECT_EQ(loaded, m_errors.empty());
        return loaded;
    }

    // The command names the file by its path, whose folder goes as everywhere.
    static std::string NotInUtf8(const std::string& file, int line) {
        return file + ':' + std::to_string(line) +
               ": plik nie jest w UTF-8, wygląda na Windows-1250; zamieni go polecenie: "
               "kalvex-convert --to utf-8 " +
               file;
    }

    support::ScratchFolder m_folder;
    Definitions m_definitions;
    std::vector<std::string> m_errors;
};

TEST_F(DefinitionsTest, ReasonsAreTranslatedAndPathsAndKeysAreNot) {
    const std::string path =
        m_folder.Put("plant.toml", "[server]\nclients = 0\ndata = 5\nkolor = 1\n");
    EXPECT_FALSE(LoadDefinitions(path, support::MarkingTranslator(), m_definitions, m_errors));
    EXPECT_THAT(
        m_errors,
        ElementsAre(path + ":2: server.clients: <oczekiwano liczby całkowitej od 1 do 10000>",
                    path + ":4: server.kolor: <nieznany klucz>"));
}

TEST_F(DefinitionsTest, WhoWantsTheVariablesAloneIsToldNothingOfTheNetwork) {
    const std::string network = "[network]\naddress = 5\ncolour = 1\ncertificate = \"nie.pem\"\n";
    const std::string variable = "[[variable]]\nname = \"A\"\ntype = \"int\"\nvalue = \"7\"\n";
    const std::string path =
        m_folder.Put("plant.toml", "[server]\nname = \"Gaz\"\n" + network + variable);
    ASSERT_TRUE(LoadVariables(path, platform::Translator(), m_definitions, m_errors));
    EXPECT_EQ(m_definitions.name, "Gaz");
    ASSERT_EQ(m_definitions.variables.size(), 1U);
    EXPECT_EQ(m_definitions.variables[0].name, "A");
    EXPECT_FALSE(Load("[server]\nname = \"Gaz\"\n" + network + variable));

    const std::string wrong =
        m_folder.Put("plant.toml", network + "[[variable]]\ntype = \"int\"\n");
    EXPECT_FALSE(LoadVariables(wrong, platform::Translator(), m_definitions, m_errors));
    EXPECT_THAT(m_errors, ElementsAre(wrong + ":5: variable.name: brak nazwy zmiennej"));
}

TEST_F(DefinitionsTest, FirstValueIsOfTheTypeOrNone) {
    ASSERT_TRUE(Load(
        "[[variable]]\nname = \"A\"\ntype = \"int\"\nvalue = \"7\"\n[[variable]]\nname = \"B\"\n"));
    const value::CVal first = InitialValue(m_definitions.variables[0]);
    EXPECT_EQ(first.GetType(), value::ValueType::Int);
    EXPECT_EQ(first, value::CVal(7));
    EXPECT_EQ(first.GetTime(), 0);
    EXPECT_EQ(InitialValue(m_definitions.variables[1]).GetType(), value::ValueType::None);
}

TEST_F(DefinitionsTest, DataOfTheMachinesConfigurationLieWhereItsServiceMayWrite) {
    const auto folderOf = [this](const std::string& path) {
        EXPECT_FALSE(LoadDefinitions(path, platform::Translator(), m_definitions, m_errors));
        return m_definitions.dataFolder + " " + m_definitions.usersFile;
    };
    const std::string machine = "/var/lib/sorvane /var/lib/sorvane/users.sqlite";
    const std::string other = "data data/users.sqlite";
    EXPECT_EQ(folderOf("/etc/sorvane/nie-ma.toml"), machine);
    EXPECT_EQ(folderOf("/etc/./sorvane//nie-ma.toml"), machine);
    EXPECT_EQ(folderOf("/etc/sorvane/stacja/../nie-ma.toml"), machine);
    EXPECT_EQ(folderOf("/etc/sorvane/stacja/nie-ma.toml"), other);
    EXPECT_EQ(folderOf("/etc/sorvane-nie-ma.toml"), other);
    EXPECT_EQ(folderOf(m_folder.Path("nie-ma.toml")), other);
    EXPECT_EQ(folderOf("nie-ma.toml"), other);
}

TEST_F(DefinitionsTest, EmptyFileGivesTheStandard) {
    ASSERT_TRUE(Load(""));
    EXPECT_EQ(m_definitions.name, "sorvaned");
    EXPECT_EQ(m_definitions.dataFolder, m_folder.Path("data"));
    EXPECT_EQ(m_definitions.usersFile, m_folder.Path("data/users.sqlite"));
    EXPECT_EQ(m_definitions.nobody, vantrel::NobodyAccess::Local);
    EXPECT_EQ(m_definitions.logRight, "100");
    EXPECT_EQ(m_definitions.maxClients, 100);
    EXPECT_EQ(m_definitions.maxVariables, 100000);
    EXPECT_EQ(m_definitions.savePeriod, 10);
    EXPECT_EQ(m_definitions.archivePeriod, 60);
    EXPECT_EQ(m_definitions.keepDays, 0);
    EXPECT_EQ(m_definitions.dayStart, 0);
    EXPECT_THAT(m_definitions.automatic, IsEmpty());
    EXPECT_TRUE(m_definitions.listening.localSocket);
    EXPECT_EQ(m_definitions.listening.group, "");
    EXPECT_EQ(m_definitions.listening.address, "");
    EXPECT_EQ(m_definitions.listening.certificate, "");
    EXPECT_EQ(m_definitions.listening.certificateKey, "");
    EXPECT_EQ(m_definitions.listening.authority, "");
    EXPECT_FALSE(m_definitions.listening.plainTextAllowed);
    EXPECT_THAT(m_definitions.access, IsEmpty());
    EXPECT_THAT(m_definitions.variables, IsEmpty());
}

TEST_F(DefinitionsTest, SettingsAreRead) {
    ASSERT_TRUE(Load(R"(
[server]
name = "Stacja"
data = "/var/lib/sorvane"
users = "users.sqlite"
nobody = "never"
log = "serwis"
clients = 5
variables = 7
save-period = 3600
[archive]
period = 1
keep-days = 400
[reports]
day-start = 6
automatic = ["month", "hour"]
[[access]]
variables = "Z1.*"
read = "gaz"
write = "100"
[[access]]
)")) << testing::PrintToString(m_errors);
    EXPECT_EQ(m_definitions.name, "Stacja");
    EXPECT_EQ(m_definitions.dataFolder, "/var/lib/sorvane");
    EXPECT_EQ(m_definitions.usersFile, m_folder.Path("users.sqlite"));
    EXPECT_EQ(m_definitions.nobody, vantrel::NobodyAccess::Never);
    EXPECT_EQ(m_definitions.logRight, "serwis");
    EXPECT_EQ(m_definitions.maxClients, 5);
    EXPECT_EQ(m_definitions.maxVariables, 7);
    EXPECT_EQ(m_definitions.savePeriod, 3600);
    EXPECT_EQ(m_definitions.archivePeriod, 1);
    EXPECT_EQ(m_definitions.keepDays, 400);
    EXPECT_EQ(m_definitions.dayStart, 6);
    EXPECT_THAT(m_definitions.automatic, ElementsAre(value::KindHour, value::KindMonth));
    ASSERT_EQ(m_definitions.access.size(), 2u);
    EXPECT_EQ(m_definitions.access[0].variables, "Z1.*");
    EXPECT_EQ(m_definitions.access[0].read, "gaz");
    EXPECT_EQ(m_definitions.access[0].write, "100");
    EXPECT_EQ(m_definitions.access[1].variables, "*");
    EXPECT_EQ(m_definitions.access[1].read, "0");
    EXPECT_EQ(m_definitions.access[1].write, "50");
}

TEST_F(DefinitionsTest, NetworkIsRead) {
    for (const char* file : {"a.pem", "a.key", "b.pem"}) m_folder.PutSecret(file, "x");
    ASSERT_TRUE(Load(R"(
[network]
local-socket = true
group = "root"
address = "0.0.0.0:4300"
certificate = "a.pem"
key = "a.key"
authority = "b.pem"
plain-text-allowed = false
)")) << testing::PrintToString(m_errors);
    EXPECT_TRUE(m_definitions.listening.localSocket);
    EXPECT_EQ(m_definitions.listening.group, "root");
    EXPECT_EQ(m_definitions.listening.address, "0.0.0.0:4300");
    EXPECT_EQ(m_definitions.listening.certificate, m_folder.Path("a.pem"));
    EXPECT_EQ(m_definitions.listening.certificateKey, m_folder.Path("a.key"));
    EXPECT_EQ(m_definitions.listening.authority, m_folder.Path("b.pem"));
    EXPECT_FALSE(m_definitions.listening.plainTextAllowed);
    ASSERT_TRUE(
        Load("[network]\nlocal-socket = false\naddress = \"plant.example:0\"\n"
             "plain-text-allowed = true\n"));
    EXPECT_FALSE(m_definitions.listening.localSocket);
    EXPECT_TRUE(m_definitions.listening.plainTextAllowed);
}

TEST_F(DefinitionsTest, PlainTextBeyondThisMachineMustBeAllowedInSoManyWords) {
    for (const char* address : {"127.0.0.1:4300", "localhost:4300", "[::1]:4300"}) {
        EXPECT_TRUE(Load("[network]\naddress = \"" + std::string(address) + "\"\n")) << address;
    }
    for (const char* address : {"0.0.0.0:4300", "plant.example:4300", "[::]:4300"}) {
        EXPECT_FALSE(Load("[network]\naddress = \"" + std::string(address) + "\"\n")) << address;
        EXPECT_THAT(m_errors, ElementsAre("plant.toml:2: network.address: poza tym komputerem "
                                          "połączenia muszą być szyfrowane (certificate, key), "
                                          "chyba że plain-text-allowed = true"));
    }
}

TEST_F(DefinitionsTest, NetworkFaultsAreToldWithTheirLines) {
    struct Row {
        const char* keys;
        const char* fault;
    };
    constexpr Row kRows[] = {
        {"local-socket = \"tak\"", "2: network.local-socket: oczekiwano true albo false"},
        {"plain-text-allowed = 2", "2: network.plain-text-allowed: oczekiwano true albo false"},
        {"group = \"no-such-group\"", "2: network.group: w systemie nie ma grupy o tej nazwie"},
        {"address = \"4300\"", "2: network.address: oczekiwano adresu w postaci komputer:port"},
        {"address = \"a\\n:1\"", "2: network.address: oczekiwano adresu w postaci komputer:port"},
        {"port = 4300", "2: network.port: nieznany klucz"},
        {"key = \"a.key\"", "2: network.key: certyfikat i klucz podaje się razem"},
        {"certificate = \"a.key\"", "2: network.certificate: certyfikat i klucz podaje się razem"},
        {"authority = \"a.key\"",
         "2: network.authority: certyfikaty klientów sprawdza tylko serwer, który ma własny "
         "certyfikat"},
        {"local-socket = false\ngroup = \"root\"",
         "3: network.group: bez gniazda lokalnego grupa nie ma znaczenia"},
        {"key = \"a.key\"\ncertificate = \"brak.pem\"",
         "3: network.certificate: brak.pem: No such file or directory"},
        {"certificate = \"a.key\"\nkey = \".\"", "3: network.key: .: Is a directory"},
        {"certificate = \"a.key\"\nkey = \"a.key\"\nauthority = \"brak.pem\"",
         "4: network.authority: brak.pem: No such file or directory"},
    };
    m_folder.PutSecret("a.key", "x");
    for (const Row& row : kRows) {
        EXPECT_FALSE(Load(std::string("[network]\n") + row.keys + "\n"));
        EXPECT_THAT(m_errors, ElementsAre("plant.toml:" + std::string(row.fault)));
    }
}

TEST_F(DefinitionsTest, SomeKeysCountAtTheStartOnly) {
    for (const char* file : {"a.pem", "a.key"}) m_folder.PutSecret(file, "x");
    ASSERT_TRUE(Load("[server]\nclients = 5\n[network]\naddress = \"localhost:1\"\n"));
    const Definitions current = m_definitions;
    EXPECT_THAT(KeepUntilNextStart(current, m_definitions), IsEmpty());
    ASSERT_TRUE(Load(R"(
[server]
name = "A"
data = "B"
users = "C"
clients = 6
[network]
local-socket = false
address = "localhost:2"
certificate = "a.pem"
key = "a.key"
authority = "a.pem"
plain-text-allowed = true
)")) << testing::PrintToString(m_errors);
    m_definitions.listening.group = "root";
    EXPECT_THAT(KeepUntilNextStart(current, m_definitions),
                ElementsAre("server.name", "server.data", "server.users", "network.local-socket",
                            "network.group", "network.address", "network.certificate",
                            "network.key", "network.authority", "network.plain-text-allowed"));
    EXPECT_THAT(KeepUntilNextStart(current, m_definitions), IsEmpty());
    EXPECT_EQ(m_definitions.listening.address, "localhost:1");
    EXPECT_EQ(m_definitions.name, "sorvaned");
    EXPECT_EQ(m_definitions.maxClients, 6);
}

TEST_F(DefinitionsTest, VariableHasItsAttributes) {
    ASSERT_TRUE(Load(R"(
[[variable]]
name = "Z1.PRZEPŁYW"
type = "int"
de = "Przepływ na wyjściu"
nd = "Przepływ"
un = "m3/h"
fo = "%.1f"
min = -0.5
max = "5000"
at = 6
rt = 30
pa = "Sieć/Z1"
report = "sum"
value = 12
)")) << testing::PrintToString(m_errors);
    ASSERT_EQ(m_definitions.variables.size(), 1u);
    const VariableConfig& variable = m_definitions.variables[0];
    EXPECT_EQ(text::ToUtf8(variable.name), "Z1.PRZEPŁYW");
    EXPECT_EQ(variable.type, value::ValueType::Int);
    EXPECT_EQ(variable.minimum, -0.5);
    EXPECT_EQ(variable.maximum, 5000.0);
    EXPECT_EQ(variable.archive, vantrel::ArchiveBit::Changes | vantrel::ArchiveBit::Samples);
    EXPECT_EQ(variable.reports,
              vantrel::ReportBit(value::KindHour) | vantrel::ReportBit(value::KindDay) |
                  vantrel::ReportBit(value::KindMonth) | vantrel::ReportBit(value::KindSpan));
    EXPECT_EQ(variable.rule, ReportRule::Sum);
    EXPECT_EQ(variable.initial, "12");
    EXPECT_FALSE(variable.signal);
    EXPECT_THAT(
        variable.attributes,
        ElementsAre(Pair("at", "6"), Pair("de", text::FromUtf8("Przepływ na wyjściu")),
                    Pair("fo", "%.1f"), Pair("max", "5000"), Pair("min", "-0.50"),
                    Pair("nd", text::FromUtf8("Przepływ")), Pair("pa", text::FromUtf8("Sieć/Z1")),
                    Pair("rt", "30"), Pair("un", text::FromUtf8("m3/h"))));
}

TEST_F(DefinitionsTest, VariablesComeFromFilesToo) {
    m_folder.Put("a.csv",
                 "\xEF\xBB\xBFname;un;signal\r\n"
                 "# pomiary\r\n"
                 "\r\n"
                 "Z1.P;MPa;sine mean=5 amplitude=1 period=60\r\n"
                 "\"Z1;\"\"T\"\"\"; °C ;\r\n");
    m_folder.Put("b.csv", "value,name\n7,Z2.P\n,Z2.T");
    ASSERT_TRUE(
        Load("[[variables]]\nfile = \"a.csv\"\n[[variables]]\nfile = \"b.csv\"\n"
             "[[variable]]\nname = \"X\"\n"))
        << testing::PrintToString(m_errors);
    std::vector<std::string> names;
    for (const VariableConfig& variable : m_definitions.variables) names.push_back(variable.name);
    EXPECT_THAT(names, ElementsAre("X", "Z1.P", "Z1;\"T\"", "Z2.P", "Z2.T"));
    EXPECT_TRUE(m_definitions.variables[1].signal);
    EXPECT_FALSE(m_definitions.variables[2].signal);
    EXPECT_EQ(m_definitions.variables[2].attributes.at("un"), text::FromUtf8("°C"));
    EXPECT_EQ(m_definitions.variables[3].initial, "7");
    EXPECT_EQ(m_definitions.variables[4].initial, "");
}

TEST_F(DefinitionsTest, FileThatIsNotThere) {
    EXPECT_FALSE(LoadDefinitions(m_folder.Path("brak.toml"), platform::Translator(), m_definitions,
                                 m_errors));
    EXPECT_THAT(m_errors, ElementsAre(m_folder.Path("brak.toml") + ": No such file or directory"));
    EXPECT_FALSE(Load("\n[[variables]]\nfile = \"brak.csv\"\n"));
    EXPECT_THAT(m_errors,
                ElementsAre("plant.toml:2: variables.file: brak.csv: No such file or directory"));
}

TEST_F(DefinitionsTest, SyntaxErrorHasItsLine) {
    EXPECT_FALSE(Load("[server]\nname = \"a\"\nclients = = 5\n"));
    EXPECT_THAT(m_errors,
                ElementsAre("plant.toml:3:11: błąd składni (Error while parsing value: could "
                            "not determine value type)"));
}

// The whole fault of a text.
struct SyntaxCase {
    std::string toml;
    const char* fault;
};

TEST_F(DefinitionsTest, WhatIsNoTomlIsToldWithItsPlace) {
    const SyntaxCase cases[] = {
        {"[[", "1:3: błąd składni (Error while parsing table header: encountered end-of-file)"},
        {"\n[=]\n",
         "2:2: błąd składni (Error while parsing key: expected bare key starting character or "
         "string delimiter, saw '=')"},
        {"[[[a]]]",
         "1:3: błąd składni (Error while parsing key: expected bare key starting character or "
         "string delimiter, saw '[')"},
        {"[a.[b]]",
         "1:4: błąd składni (Error while parsing key: expected bare key starting character or "
         "string delimiter, saw '[')"},
        {"[server]\nclients = [}",
         "2:12: błąd składni (Error while parsing value: could not determine value type)"},
        {"a = {", "1:6: błąd składni (Error while parsing inline table: encountered end-of-file)"},
    };
    for (const SyntaxCase& syntax : cases) {
        EXPECT_FALSE(Load(syntax.toml));
        EXPECT_THAT(m_errors, ElementsAre(std::string("plant.toml:") + syntax.fault));
    }
}

TEST_F(DefinitionsTest, CharactersBeyondAsciiStandInQuotesAndCommentsAlone) {
    constexpr const char* kFault = ": znak spoza ASCII poza cudzysłowem";
    const SyntaxCase cases[] = {
        {"# ż\n[server]\nname = Żółw\n", "3:8"},
        {"\xEF\xBB\xBF"
         "łó = 1",
         "1:1"},
        {"ab.ł = 1", "1:4"},
        {"[sekcja ł]", "1:9"},
        {"a = \"ś\\\"ć\" ń", "1:12"},
        {"a = 'ś\\' ń", "1:10"},
        {"a = 1\"ś\"", "1:7"},
        {"a = 1.\"ś\"", "1:8"},
        {"a = \"\"\"ś\n\"\"\\\"\"\"\"ń", "2:8"},
        {"a = '''ś\n''\\''''' ń", "2:10"},
        {"a = \"ś\nb = ń", "2:5"},
        {"a = [ # ś\n ł]", "2:2"},
    };
    for (const SyntaxCase& syntax : cases) {
        EXPECT_FALSE(Load(syntax.toml)) << syntax.toml;
        EXPECT_THAT(m_errors, ElementsAre(std::string("plant.toml:") + syntax.fault + kFault));
    }
    EXPECT_TRUE(Load("\xEF\xBB\xBF# ł\n[server] # ć\n\"name\" = 'Żółw' # \"ń\n"));
    EXPECT_EQ(m_definitions.name, text::FromUtf8("Żółw"));
}

std::string Times(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

TEST_F(DefinitionsTest, NestingIsBounded) {
    const SyntaxCase deep[] = {
        {"a" + Times(300'000, ".a") + " = 1", "1:128"},
        {"[a" + Times(300'000, ".a") + "]\n", "1:127"},
        {"[[ a" + Times(300'000, " . \"a.b\"") + "]]\n", "1:502"},
        {"a = " + Times(300'000, "["), "1:68"},
        {"a = " + Times(40, "{a = "), "1:160"},
        {"a = " + Times(10, "{a.b.c.d.e.f = "), "1:140"},
        {"[a" + Times(30, ".a") + "]\nb" + Times(30, ".b") + " = " + Times(4, "["), "2:67"},
        {"[a" + Times(31, ".a") + "]\nb = 1\nb" + Times(32, ".b") + " = 1", "3:64"},
    };
    for (const SyntaxCase& syntax : deep) {
        EXPECT_FALSE(Load(syntax.toml));
        EXPECT_THAT(m_errors, ElementsAre(std::string("plant.toml:") + syntax.fault +
                                          ": zagnieżdżenie głębsze niż 64"));
    }
    const SyntaxCase flat[] = {
        {"a" + Times(63, ".a") + " = 1", "1: a: nieznana sekcja"},
        {"a = " + Times(63, "[") + Times(63, "]"), "1: a: nieznana sekcja"},
        {"a = [" + Times(100, "[], {a.b = 1.5, c.d = 2}, '[[[[', \"{{{{\", ") + "]",
         "1: a: nieznana sekcja"},
        {Times(100, "# [[[[{\n") + "[a]\n" + Times(100, "# [[[[{\n"), "101: a: nieznana sekcja"},
    };
    for (const SyntaxCase& syntax : flat) {
        EXPECT_FALSE(Load(syntax.toml));
        EXPECT_THAT(m_errors, ElementsAre(std::string("plant.toml:") + syntax.fault));
    }
}

TEST_F(DefinitionsTest, SizeOfAFileIsBounded) {
    const std::string path = m_folder.Put("plant.toml", "");
    std::filesystem::resize_file(path, kLongestDefinitionFile + 1);
    EXPECT_FALSE(LoadDefinitions(path, platform::Translator(), m_definitions, m_errors));
    EXPECT_THAT(m_errors, ElementsAre(path + ": plik większy niż 64 MiB"));
    const std::string csv = m_folder.Put("a.csv", "");
    std::filesystem::resize_file(csv, kLongestDefinitionFile + 1);
    EXPECT_FALSE(Load("[[variables]]\nfile = \"a.csv\"\n"));
    EXPECT_THAT(m_errors, ElementsAre("a.csv: plik większy niż 64 MiB"));
}

TEST_F(DefinitionsTest, ColumnsAndRowsOfACsvFileAreBounded) {
    m_folder.Put("a.csv", Times(300'000, "at,"));
    EXPECT_FALSE(Load("[[variables]]\nfile = \"a.csv\"\n"));
    EXPECT_THAT(m_errors, ElementsAre("a.csv:1: więcej kolumn niż kluczy zmiennej"));
    m_folder.Put("a.csv", "name\n" + Times(1'000'000, "A\n") + "\n# ł\nA\n" + Times(10, "B\n"));
    EXPECT_FALSE(Load("[[variables]]\nfile = \"a.csv\"\n"));
    EXPECT_THAT(m_errors, ElementsAre("a.csv:1000004: więcej zmiennych niż 1000000"));
}

TEST_F(DefinitionsTest, EveryFaultIsToldWithFileLineAndKey) {
    m_folder.Put("a.csv",
                 "name,at,min\n"
                 "Z1.P,-1,\n"
                 ",2,\n"
                 "Z1.T,2,zero\n"
                 "Z1.V,2,1,9\n"
                 "\"Z1.W,2,1\n"
                 "X,2,1\n"
                 "Z1.P,2,1\n"
                 "Z1.P,2,1\n");
    EXPECT_FALSE(Load(R"(kolor = "czerwony"
[server]
clients = 0
nobody = "wszyscy"
port = 4810
log = "101"
[reports]
day-start = 24
automatic = ["hour", "week"]
[archive]
period = [60]
[[access]]
variables = ""
read = ""
[[variables]]
file = "a.csv"
[[variable]]
name = "X"
[[variable]]
de = "bez nazwy"
[[variable]]
name = " Y"
type = "float"
report = "median"
signal = "sine mean=1"
rt = 1.5
un = "Ω"
[[variable]]
name = "V"
min = 2
max = 1
[[variable]]
name = "W"
value = "pięć"
[[variable]]
name = "U"
type = "text"
signal = "constant value=1"
)"));
    EXPECT_THAT(
        m_errors,
        ElementsAre(
            "plant.toml:1: kolor: nieznana sekcja",
            "plant.toml:3: server.clients: oczekiwano liczby całkowitej od 1 do 10000",
            "plant.toml:4: server.nobody: oczekiwano jednego ze słów never, local, always",
            "plant.toml:5: server.port: nieznany klucz",
            "plant.toml:6: server.log: oczekiwano poziomu od 0 do 100 albo nazwy grupy",
            "plant.toml:8: reports.day-start: oczekiwano liczby całkowitej od 0 do 23",
            "plant.toml:9: reports.automatic: oczekiwano słów hour, day, month",
            "plant.toml:11: archive.period: oczekiwano tekstu albo liczby",
            "plant.toml:13: access.variables: oczekiwano nazwy, w której * i ? zastępują znaki",
            "plant.toml:14: access.read: oczekiwano poziomu od 0 do 100 albo nazwy grupy",
            "plant.toml:19: variable.name: brak nazwy zmiennej",
            "plant.toml:22: variable.name: oczekiwano nazwy od 1 do 255 znaków, bez odstępu na "
            "początku i na końcu i bez znaków sterujących",
            "plant.toml:23: variable.type: oczekiwano jednego ze słów bool, short, int, int64, "
            "double, text",
            "plant.toml:24: variable.report: oczekiwano jednego ze słów mean, sum, increase",
            "plant.toml:25: variable.signal: brak parametru amplitude",
            "plant.toml:26: variable.rt: oczekiwano liczby całkowitej od 0 do 255",
            "plant.toml:27: variable.un: znak spoza strony kodowej Windows-1250",
            "plant.toml:28: variable.min: min nie może być większe od max",
            "plant.toml:32: variable.value: oczekiwano liczby",
            "plant.toml:35: variable.signal: zmienna tekstowa nie może mieć sygnału",
            "a.csv:2: at: oczekiwano liczby całkowitej od 0 do 255",
            "a.csv:3: name: brak nazwy zmiennej", "a.csv:4: min: oczekiwano liczby",
            "a.csv:5: więcej komórek niż kolumn", "a.csv:6: name: niezamknięty cudzysłów",
            "a.csv:7: name: zmienna X jest już w plant.toml:17",
            "a.csv:9: name: zmienna Z1.P jest już w a.csv:8"));
}

TEST_F(DefinitionsTest, SectionsHaveTheirForms) {
    EXPECT_FALSE(
        Load("server = 1\naccess = [1]\n[variable]\nname = \"X\"\n"
             "[[variables]]\nfile = 5\nplik = \"a\"\n"));
    EXPECT_THAT(m_errors, ElementsAre("plant.toml:1: server: oczekiwano sekcji [server]",
                                      "plant.toml:2: access: oczekiwano sekcji [[access]]",
                                      "plant.toml:3: variable: oczekiwano sekcji [[variable]]",
                                      "plant.toml:6: variables.file: oczekiwano ścieżki",
                                      "plant.toml:7: variables.plik: nieznany klucz"));
}

TEST_F(DefinitionsTest, ValueHasNoCharacterOfCodeZero) {
    EXPECT_FALSE(Load("[[variable]]\nname = \"X\"\ntype = \"text\"\nvalue = \"a\\u0000b\"\n"));
    EXPECT_THAT(m_errors, ElementsAre("plant.toml:4: variable.value: tekst ze znakiem o kodzie 0"));
}

TEST_F(DefinitionsTest, ColumnsHaveToBeKnown) {
    m_folder.Put("a.csv", "\n\nname,kolor,name\nX,czerwony,Y\n");
    EXPECT_FALSE(Load("[[variables]]\nfile = \"a.csv\"\n"));
    EXPECT_THAT(m_errors, ElementsAre("a.csv:3: name: kolumna występuje więcej niż raz",
                                      "a.csv:3: kolor: nieznana kolumna",
                                      "a.csv:3: name: kolumna występuje więcej niż raz"));
}

TEST_F(DefinitionsTest, ConfigurationInWindows1250IsToldAsSuch) {
    EXPECT_FALSE(Load(text::FromUtf8("[server]\nname = \"x\"\n# Gałąź\nvariables = \"y\"\n")));
    EXPECT_THAT(m_errors, ElementsAre(NotInUtf8("plant.toml", 3)));
}

TEST_F(DefinitionsTest, FileInWindows1250IsToldAsSuch) {
    m_folder.Put("a.csv", text::FromUtf8("# Sieć\nname;de;signal\n\nZ1.P;Pressure;\n"
                                         "Z1.T;Ciśnienie;constant value=1\n"
                                         "Z1.W;Wyłącznik;constant wartość=1\nZ1.P;Gałąź;x\n"));
    m_folder.Put("b.csv", text::FromUtf8("name;opis_półki\nX;1\n"));
    EXPECT_FALSE(
        Load("[[variables]]\nfile = \"a.csv\"\n[[variables]]\nfile = \"b.csv\"\n"
             "[[variable]]\nname = \"X\"\nrt = 300\n"));
    EXPECT_THAT(m_errors,
                ElementsAre("plant.toml:7: variable.rt: oczekiwano liczby całkowitej od 0 do 255",
                            NotInUtf8("a.csv", 5), NotInUtf8("b.csv", 1)));
    m_folder.Put("a.csv", text::FromUtf8("# Sieć\nname;de\nZ1.P;Pressure\n"));
    EXPECT_TRUE(Load("[[variables]]\nfile = \"a.csv\"\n"));
}

TEST_F(DefinitionsTest, ValueHasToBeWithinItsBounds) {
    m_folder.Put("a.csv",
                 "name,type,min,max,value\n"
                 "A,double,0,10,10.5\n"
                 "B,int,0,,-1\n"
                 "C,short,0,10,10\n"
                 "D,double,,10,-1e300\n"
                 "E,text,0,10,11\n"
                 "F,double,,,1e400\n"
                 "G,int,0,10,10.9\n");
    EXPECT_FALSE(
        Load("[[variables]]\nfile = \"a.csv\"\n"
             "[[variable]]\nname = \"X\"\nmin = 5\nvalue = 4\nsignal = \"constant value=5\"\n"));
    EXPECT_THAT(m_errors, ElementsAre("plant.toml:3: variable.value: value musi być od min do max",
                                      "a.csv:2: value: value musi być od min do max",
                                      "a.csv:3: value: value musi być od min do max",
                                      "a.csv:7: value: oczekiwano liczby"));
}

TEST_F(DefinitionsTest, VariablesAreBounded) {
    EXPECT_FALSE(
        Load("[server]\nvariables = 1\n[[variable]]\nname = \"A\"\n"
             "[[variable]]\nname = \"B\"\n"));
    EXPECT_THAT(m_errors,
                ElementsAre("plant.toml: zmiennych jest 2, a server.variables dopuszcza 1"));
    EXPECT_TRUE(
        Load("[server]\nvariables = 2\n[[variable]]\nname = \"A\"\n"
             "[[variable]]\nname = \"B\"\n"));
}

TEST_F(DefinitionsTest, NamesAreBounded) {
    EXPECT_TRUE(Load("[[variable]]\nname = \"" + std::string(255, 'a') + "\"\n"));
    EXPECT_FALSE(Load("[[variable]]\nname = \"" + std::string(256, 'a') + "\"\n"));
}

TEST_F(DefinitionsTest, AfterAHundredFaultsTheyAreCounted) {
    std::string csv = "name,at\n";
    for (int row = 0; row < 150; ++row) csv += "X" + std::to_string(row) + ",x\n";
    m_folder.Put("a.csv", csv);
    EXPECT_FALSE(Load("[[variables]]\nfile = \"a.csv\"\n"));
    ASSERT_EQ(m_errors.size(), 101u);
    EXPECT_EQ(m_errors[99], "a.csv:101: at: oczekiwano liczby całkowitej od 0 do 255");
    EXPECT_EQ(m_errors[100], "dalszych błędów: 50");
}

TEST(DefinitionsCsvTableTest, CellsAndSeparators) {
    const auto cells = [](std::string_view text) {
        std::vector<std::vector<std::string>> all;
        for (const CsvRow& row : ReadCsv(text, {9, 9})) all.push_back(row.cells);
        return all;
    };
    EXPECT_THAT(cells(""), IsEmpty());
    EXPECT_THAT(cells("a\nb,c"), ElementsAre(ElementsAre("a"), ElementsAre("b", "c")));
    EXPECT_THAT(cells("a;b,c\nd;\n"), ElementsAre(ElementsAre("a", "b,c"), ElementsAre("d", "")));
    EXPECT_THAT(cells("a\tb;c\n\td"), ElementsAre(ElementsAre("a", "b;c"), ElementsAre("", "d")));
    EXPECT_THAT(cells("a,b\n \"x, \"\"y\"\"\" , z "),
                ElementsAre(ElementsAre("a", "b"), ElementsAre("x, \"y\"", "z")));
}

TEST(DefinitionsCsvTableTest, BrokenQuotesAreTold) {
    EXPECT_FALSE(ReadCsv("a,b\n\"x,y\n", {9, 9})[1].closed);
    EXPECT_FALSE(ReadCsv("a,b\n\"x\"z,y\n", {9, 9})[1].closed);
    EXPECT_TRUE(ReadCsv("a,b\nx\"y,z\n", {9, 9})[1].closed);
}

TEST(DefinitionsCsvTableTest, OneCellAndOneRowTooManyShowThatThereWasMore) {
    const std::vector<CsvRow> rows = ReadCsv("a,b,c,d\ne\nf\ng,\n", {2, 2});
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_THAT(rows[0].cells, ElementsAre("a", "b", "c"));
    EXPECT_THAT(rows[1].cells, ElementsAre("e"));
    EXPECT_THAT(rows[2].cells, ElementsAre("f"));
}

}  // namespace
}  // namespace kalvex::server
