#include "vantrel/Codes.h"

#include <gtest/gtest.h>

#include "text/CodePage.h"

namespace kalvex::vantrel {
namespace {

TEST(CodesTest, HaveWords) {
    EXPECT_EQ(ConnectionReasonText(ReasonUnknownAddress, platform::Translator()),
              "nieznany adres serwera");
    EXPECT_EQ(ConnectionReasonText(17, platform::Translator()), "kod 17");
    EXPECT_EQ(text::ToUtf8(RequestResultText(ResultBadValue, platform::Translator())),
              "niedopuszczalna wartość");
    EXPECT_EQ(RequestResultText(17, platform::Translator()), "kod 17");
}

}  // namespace
}  // namespace kalvex::vantrel
