#include "platform/ForeignText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/log_recorder.h"
#include "support/marking_translator.h"
#include "text/CodePage.h"

namespace kalvex::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ForeignTextTest : public testing::Test {
  protected:
    void Read(std::string_view content, const std::string& file = "/srv/a.kx") {
        TellForeignText(file, content, m_log, m_translator, m_told);
    }

    static std::string Line(int line, const std::string& file = "/srv/a.kx") {
        return "1 " + file + ':' + std::to_string(line) +
               ": plik jest w UTF-8, a jest czytany w kodzie Windows-1250; zamieni go polecenie: "
               "kalvex-convert " +
               file;
    }

    support::LogRecorder m_log;
    const Translator m_translator;
    ToldFiles m_told;
};

TEST_F(ForeignTextTest, FileIsDescribedWithItsLineAndTheCommand) {
    const Notice notice = DescribeForeignText("/srv/stan gazu.kx", "A\n; gęś\n");
    EXPECT_EQ(InWords(notice, support::MarkingTranslator()),
              "</srv/stan gazu.kx:2: plik jest w UTF-8, a jest czytany w kodzie Windows-1250; "
              "zamieni go polecenie: kalvex-convert '/srv/stan gazu.kx'>");
    EXPECT_FALSE(DescribeForeignText("/srv/a.kx", text::FromUtf8("A\n; gęś\n")));
}

TEST_F(ForeignTextTest, LogIsToldOnce) {
    Read("; gęś\n");
    EXPECT_THAT(m_log.Take(), ElementsAre(Line(1)));
    Read("; gęś\n");
    Read("; gęś\nA:1\n");
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(ForeignTextTest, FileAsItShouldBeIsNotTold) {
    Read(text::FromUtf8("; gęś\n"));
    Read("");
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(ForeignTextTest, AnotherLineIsTold) {
    Read("; gęś\n");
    Read("\n; gęś\n");
    EXPECT_THAT(m_log.Take(), ElementsAre(Line(1), Line(2)));
}

TEST_F(ForeignTextTest, FileThatWasMendedIsToldAnew) {
    Read("; gęś\n");
    Read(text::FromUtf8("; gęś\n"));
    Read("; gęś\n");
    EXPECT_THAT(m_log.Take(), ElementsAre(Line(1), Line(1)));
}

TEST_F(ForeignTextTest, EachFileIsTold) {
    Read("; gęś\n");
    Read("; gęś\n", "/srv/b.kx");
    EXPECT_THAT(m_log.Take(), ElementsAre(Line(1), Line(1, "/srv/b.kx")));
}

TEST_F(ForeignTextTest, WhatWasToldOfManyFilesIsForgotten) {
    Read("; gęś\n");
    for (std::size_t i = 1; i < kMostToldFiles; ++i) Read("ą", std::to_string(i));
    m_log.Take();
    Read("; gęś\n");
    EXPECT_THAT(m_log.Take(), IsEmpty());
    Read("ą", "b");
    Read("; gęś\n");
    EXPECT_THAT(m_log.Take(), ElementsAre(Line(1, "b"), Line(1)));
    EXPECT_EQ(m_told.size(), 2U);
}

TEST_F(ForeignTextTest, LineIsTranslated) {
    TellForeignText("a", "ą", m_log, support::MarkingTranslator(), m_told);
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 <a:1: plik jest w UTF-8, a jest czytany w kodzie Windows-1250; "
                            "zamieni go polecenie: kalvex-convert a>"));
}

}  // namespace
}  // namespace kalvex::platform
