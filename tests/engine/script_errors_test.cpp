#include <gmock/gmock.h>

#include "support/script_world.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

class ScriptErrorsTest : public support::ScriptWorld {};

TEST_F(ScriptErrorsTest, EveryCodeHasItsMessage) {
    const std::vector<std::string> expected = {
        "Brak błędów",
        "Nieznane słowo kluczowe",
        "Błędna nazwa zmiennej",
        "Zmienna nie została poprawnie zdefiniowana",
        "Błąd w wyrażeniu SET",
        "Nie znaleziono operatora podstawienia",
        "Nie znaleziono etykiety",
        "Nie znaleziono procedury",
        "Nie zdefiniowano pliku",
        "Błąd otwarcia pliku",
        "Nie znaleziono poprawnego operatora warunkowego",
        "Inny błąd",
        "Przepełnienie stosu",
        "Błąd w zapisie funkcji",
        "Błąd w równaniu matematycznym",
        "Błąd pobrania wartości zdalnej zmiennej",
        "Błąd obliczenia wyrażenia",
        "Wystąpił znak spoza tablicy ASCII",
        "Nie znaleziono właściwego operatora",
        "Błąd podczas pobierania łańcucha znaków",
        "Błąd podczas pobierania wartości liczbowej",
        "Niewłaściwy typ zmiennej",
        "Nieprawidłowe lub brakujące argumenty wyrażenia",
        "Deklarowana nazwa zmiennej zawiera znak kropki",
        "Nie znaleziono dla instrukcji IF definicji zakończenia - ENDIF",
        "Brak instrukcji IF...THEN dla użytej komendy ENDIF",
        "Brak instrukcji ENDIF dla instrukcji IF...THEN",
        "Oczekiwanie na pobranie danych bieżących",
    };
    const CKalvexDoc document(services);
    for (std::size_t code = 0; code < expected.size(); ++code) {
        EXPECT_EQ(text::ToUtf8(document.GetErrorMessage(static_cast<int>(code))), expected[code]);
    }
    EXPECT_EQ(text::ToUtf8(document.GetErrorMessage(28)), "Inny błąd (28)");
    EXPECT_EQ(text::ToUtf8(document.GetErrorMessage(-1)), "Inny błąd (-1)");
}

TEST_F(ScriptErrorsTest, MessagesPassThroughTheTranslatorButForTheMissingComparison) {
    struct Marker final : platform::Translator {
        std::string Translate(const char* polish) const override {
            return "<" + text::FromUtf8(polish) + ">";
        }
    } marker;
    const DocumentServices translated{{clock, log, marker, users, paths, language::Functions()},
                                      language::Statements(),
                                      questions};
    const CKalvexDoc document(translated);
    EXPECT_EQ(text::ToUtf8(document.GetErrorMessage(16)), "<Błąd obliczenia wyrażenia>");
    EXPECT_EQ(text::ToUtf8(document.GetErrorMessage(18)), "Nie znaleziono właściwego operatora");
    EXPECT_EQ(document.FormatErrorReport(0, 0, ""), text::FromUtf8("< : Linia >1 - <Brak błędów>"));
}

TEST_F(ScriptErrorsTest, ReportNamesLineMessageAndText) {
    const CKalvexDoc document(services);
    EXPECT_EQ(text::ToUtf8(document.FormatErrorReport(11, operands::ErrorUnknownKeyword, "FOO")),
              " : Linia 12 - Nieznane słowo kluczowe : FOO");
    EXPECT_EQ(text::ToUtf8(document.FormatErrorReport(0, operands::ErrorOther, "")),
              " : Linia 1 - Inny błąd");
}

TEST_F(ScriptErrorsTest, NewestReportIsKeptUntilTheStartOrTheReset) {
    const auto report = [](const CKalvexDoc& document) {
        const auto& kept = document.State().report;
        if (!kept) return std::string("none");
        return std::to_string(kept->time - kStart) + " level " + std::to_string(kept->level) +
               " line " + std::to_string(kept->line) + " " + text::ToUtf8(kept->text) +
               (kept->waiting ? " waiting" : "");
    };
    CKalvexDoc& document = Run("LOCAL X\nfoo");
    EXPECT_EQ(report(document), "0 level 1 line 1 Nieznane słowo kluczowe : FOO");
    document.Stop();
    EXPECT_EQ(report(document), "0 level 1 line 1 Nieznane słowo kluczowe : FOO");
    document.Start();
    EXPECT_EQ(report(document), "none");
    Tick(100);
    EXPECT_EQ(report(document), "0 level 1 line 1 Nieznane słowo kluczowe : FOO");
    document.Reset();
    EXPECT_EQ(report(document), "none");
    CKalvexDoc& stray = Run("ENDIF");
    EXPECT_EQ(report(stray), "0 level 1 line 0 Brak instrukcji IF...THEN dla użytej komendy ENDIF");
    CKalvexDoc& waiting = Open("REMOTE R srv@A\nLOCAL X\nSET X = R");
    waiting.Start();
    Tick(100);
    static_cast<support::HandRemote&>(*waiting.Variables().Find("R")).answer =
        operands::ReadNothing;
    Tick(100);
    EXPECT_EQ(report(waiting),
              "0 level 2 line 2 Oczekiwanie na pobranie danych bieżących : R waiting");
}

TEST_F(ScriptErrorsTest, FirstSpecificErrorStands) {
    CKalvexDoc document(services);
    document.SetError(operands::ErrorExpression, "pierwszy", false);
    document.SetError(operands::ErrorUndefinedVariable, "drugi", false);
    EXPECT_EQ(Error(document), "16 pierwszy");
}

TEST_F(ScriptErrorsTest, GeneralErrorGivesWay) {
    CKalvexDoc document(services);
    document.SetError(operands::ErrorOther, "", false);
    document.SetError(operands::ErrorUndefinedVariable, "x", false);
    EXPECT_EQ(Error(document), "3 x");
    document.SetError(operands::ErrorOther, "", false);
    EXPECT_EQ(Error(document), "3 x");
}

TEST_F(ScriptErrorsTest, ForceReplaces) {
    CKalvexDoc document(services);
    document.SetError(operands::ErrorExpression, "pierwszy", false);
    document.SetError(operands::ErrorUndefinedVariable, "drugi", true);
    EXPECT_EQ(Error(document), "3 drugi");
}

TEST_F(ScriptErrorsTest, UnknownKeywordIsNamedInUpperCase) {
    CKalvexDoc& document = Run("foo bar");
    EXPECT_EQ(Error(document), "1 FOO");
    EXPECT_EQ(Log().back(), "main.kx : Linia 1 - Nieznane słowo kluczowe : FOO");
    EXPECT_EQ(Error(Run("żółw")), "1 ŻÓŁW");
    EXPECT_EQ(Error(Run("\"tekst")), "1 \"");
}

TEST_F(ScriptErrorsTest, StatementThatFailsWithoutAReasonIsTheGeneralError) {
    CKalvexDoc& document = Run("REMOTE A \"srv@");
    EXPECT_EQ(Error(document), "11");
    EXPECT_EQ(Log().back(), "main.kx : Linia 1 - Inny błąd");
}

TEST_F(ScriptErrorsTest, KeywordsInAnyCase) {
    CKalvexDoc& document = Run("local A = 1\nSet A = A + 1");
    EXPECT_EQ(Value(document, "A"), "171:2.00");
}

TEST_F(ScriptErrorsTest, BlankLinesCommentsAndLabelsSucceed) {
    CKalvexDoc& document = Run("   \n;\n   ; tekst\n  :label\n: label\n\t\nLOCAL A");
    EXPECT_EQ(document.State().m_nCurrentLine, 7);
    EXPECT_EQ(Error(document), "0");
    EXPECT_EQ(Value(document, "A"), "255:");
}

TEST_F(ScriptErrorsTest, TabsAreBlanksAlsoInStrings) {
    CKalvexDoc& document = Run("\tLOCAL\tA\t=\t\"x\ty\"");
    EXPECT_EQ(Value(document, "A"), "190:x y");
}

TEST_F(ScriptErrorsTest, FinishedScriptKeepsItsErrorSlot) {
    CKalvexDoc& document = Run("LOCAL A = 1");
    document.SetError(operands::ErrorBadSet, "x", true);
    EXPECT_TRUE(document.ExecuteLine());
    EXPECT_EQ(Error(document), "4 x");
}

}  // namespace
}  // namespace kalvex::engine
