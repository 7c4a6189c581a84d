// What scripts see of variables that come and go while the server runs.
#include "script_fixture.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kWith =
    "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"Y\"\nvalue = 7\n"
    "[[variable]]\nname = \"X\"\nvalue = 5\nun = \"bar\"\nrt = 2\n";
constexpr const char* kWithout =
    "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"Y\"\nvalue = 7\n";
constexpr const char* kSecret =
    "[[access]]\nvariables = \"X\"\nread = \"100\"\nwrite = \"0\"\n[[access]]\nwrite = \"0\"\n"
    "[[variable]]\nname = \"Y\"\nvalue = 7\n"
    "[[variable]]\nname = \"X\"\nvalue = 5\nun = \"bar\"\nrt = 2\n";

// Goes round for ever and keeps what it has read last.
constexpr const char* kWatch =
    "REMOTE x srv@X\nLOCAL nieznana = 0\nLOCAL y = x\n:p\nIF UNKNOWN x THEN\nSET nieznana = 1\n"
    "ELSE\nSET nieznana = 0\nSET y = x\nENDIF\nGOTO p";

class ScriptReloadTest : public ScriptsAtServer {
  protected:
    ScriptReloadTest() { StartServer(kWith); }

    void Reload(const char* toml) {
        m_folder.Put("plant.toml", toml);
        m_server->Reload();
        Second();
    }

    // What the script sees: is it unknown, what was read last, unit and status.
    static std::string Seen(engine::CKalvexDoc& document) {
        operands::CVariable& x = *document.Variables().Find("x");
        std::uint16_t status = 0xFFFF;
        x.GetStatus(&status, value::KindCurrent);
        return Value(document, "nieznana") + " " + Value(document, "y") + " " + x.GetUnit() + " " +
               std::to_string(status);
    }
};

TEST_F(ScriptReloadTest, VariableThatIsTakenOutBecomesUnknownUntilItComesBack) {
    engine::CKalvexDoc& document = Begin(kWatch);
    Second();
    EXPECT_EQ(Seen(document), "171:0.00 171:5.00 bar 0");
    Reload(kWithout);
    EXPECT_EQ(Seen(document), "171:1.00 171:5.00  1");
    EXPECT_THAT(Errors(), ElementsAre("main.kx - Brak zmiennej w źródle (srv@X)"));
    Reload(kWith);
    EXPECT_EQ(Seen(document), "171:0.00 171:5.00 bar 0");
}

TEST_F(ScriptReloadTest, VariableThatMayNotBeReadAnyMoreBecomesUnknown) {
    engine::CKalvexDoc& document = Begin(kWatch);
    Second();
    Reload(kSecret);
    EXPECT_EQ(Seen(document), "171:1.00 171:5.00  1");
    EXPECT_THAT(Errors(), ElementsAre("main.kx - Brak zmiennej w źródle (srv@X)"));
    Reload(kWith);
    EXPECT_EQ(Seen(document), "171:0.00 171:5.00 bar 0");
}

TEST_F(ScriptReloadTest, LineThatReadsItStandsAndGoesOn) {
    engine::CKalvexDoc& document =
        Begin("IGNORE_UNKNOWN_ON\nREMOTE x srv@X\nLOCAL n = x\n:p\nSET n = n + x\nGOTO p");
    Second();
    Reload(kWithout);
    EXPECT_EQ(Error(document), "15 x");
    const std::string standing = Value(document, "n");
    Second();
    EXPECT_EQ(Value(document, "n"), standing);
    Reload(kWith);
    EXPECT_EQ(Error(document), "0");
    EXPECT_NE(Value(document, "n"), standing);
}

TEST_F(ScriptReloadTest, ReportsOfAVariableThatIsTakenOutAreNotToBeHad) {
    engine::CKalvexDoc& document = Begin(
        "REMOTE x srv@X\nLOCAL y = x\nPUT x HREP 2024 3 10 6 3.5\nSLEEP 1\n:p\n"
        "GET x HREP 2024 3 10 6\n:a\nIF NOT READY x.HREP GOTO a\nLOCAL nieznany = 0\n"
        "IF UNKNOWN x.HREP THEN\nSET nieznany = 1\nELSE\nSET nieznany = 0\nENDIF\nGOTO p");
    Second();
    Second();
    EXPECT_EQ(Value(document, "nieznany"), "171:0.00");
    Reload(kWithout);
    EXPECT_EQ(Value(document, "nieznany"), "171:1.00");
    Reload(kWith);
    EXPECT_EQ(Value(document, "nieznany"), "171:0.00");
}

// A script sees its own write before the server answers, but not for ever.
TEST_F(ScriptReloadTest, WriteToAVariableThatIsTakenOutDoesNotBringItBack) {
    Begin("REMOTE x srv@X\nLOCAL y = x\nSLEEP 1\nSET x = 9\nSLEEP 1\nSET x = 8", "pisze.kx");
    engine::CKalvexDoc& document = Begin(kWatch);
    Second();
    Reload(kWithout);
    Second();
    Second();
    EXPECT_EQ(Value(document, "nieznana"), "171:1.00");
    Reload(kWith);
    EXPECT_EQ(Seen(document), "171:0.00 171:5.00 bar 0");
}

}  // namespace
}  // namespace kalvex::server
