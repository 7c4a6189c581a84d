#include "platform/Translator.h"

#include <gtest/gtest.h>

#include "support/marking_translator.h"
#include "text/CodePage.h"

namespace kalvex::platform {
namespace {

TEST(TranslatorTest, WithoutACatalogueTheTextIsItsKey) {
    EXPECT_EQ(Translator().Translate("żółw"), text::FromUtf8("żółw"));
}

TEST(TranslatorTest, NoticeIsTranslatedAndItsValuesAreNot) {
    const Notice notice{"zmienna %s jest już w %s", {"żółw %s", "\xe3\x83\x87"}};
    EXPECT_TRUE(notice);
    EXPECT_EQ(InWords(notice, support::MarkingTranslator()),
              "<zmienna żółw %s jest już w \xe3\x83\x87>");
    EXPECT_FALSE(Notice());
}

}  // namespace
}  // namespace kalvex::platform
