#include "vantrel/Codes.h"

#include <gtest/gtest.h>

namespace kalvex::vantrel {
namespace {

TEST(CodesTest, HaveWords) {
    EXPECT_EQ(ConnectionReasonText(ReasonUnknownAddress, platform::Translator()),
              "nieznany adres serwera");
    EXPECT_EQ(ConnectionReasonText(17, platform::Translator()), "kod 17");
}

}  // namespace
}  // namespace kalvex::vantrel
