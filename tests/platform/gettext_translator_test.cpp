#include "platform/GettextTranslator.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

#include "text/CodePage.h"

namespace kalvex::platform {
namespace {

constexpr const char* kVariables[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};

class GettextTranslatorTest : public testing::Test {
  protected:
    GettextTranslatorTest() {
        for (const char* name : kVariables) ::unsetenv(name);
    }
    ~GettextTranslatorTest() override {
        for (const char* name : kVariables) ::unsetenv(name);
        std::setlocale(LC_ALL, "C");
    }

    static std::string Translate(const char* polish) {
        return text::ToUtf8(GettextTranslator(KALVEX_LOCALES).Translate(polish));
    }
};

TEST_F(GettextTranslatorTest, WithoutALanguageTextsArePolish) {
    EXPECT_EQ(Translate("Inny błąd"), "Inny błąd");
}

TEST_F(GettextTranslatorTest, LanguageIsThatOfTheEnvironment) {
    ::setenv("LANGUAGE", "en", 1);
    EXPECT_EQ(Translate("Inny błąd"), "Other error");
    ::setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_EQ(Translate("Inny błąd"), "Other error");
}

TEST_F(GettextTranslatorTest, LanguageWithoutACatalogueIsPolish) {
    ::setenv("LANGUAGE", "xx", 1);
    EXPECT_EQ(Translate("Inny błąd"), "Inny błąd");
}

TEST_F(GettextTranslatorTest, TextWithoutAnEntryStaysAsItIs) {
    ::setenv("LANGUAGE", "en", 1);
    EXPECT_EQ(Translate("żółw"), "żółw");
    EXPECT_EQ(Translate(""), "");
}

TEST_F(GettextTranslatorTest, AnswerIsAnEngineText) {
    EXPECT_EQ(GettextTranslator(KALVEX_LOCALES).Translate("żółw"), "\xBF\xF3\xB3w");
}

TEST_F(GettextTranslatorTest, NumbersKeepTheirPoint) {
    ::setenv("LANG", "pl_PL.UTF-8", 1);
    Translate("Inny błąd");
    EXPECT_STREQ(std::localeconv()->decimal_point, ".");
}

}  // namespace
}  // namespace kalvex::platform
