#include "vantrel/KnownLogins.h"

#include <gtest/gtest.h>

#include <string>

namespace kalvex::vantrel {
namespace {

TEST(KnownLoginsTest, LoginIsKnownForAnHour) {
    KnownLogins known;
    known.Note("10.1.2.3", "Adam", "abc", 100);
    for (const std::int64_t now : {100, 3700}) {
        EXPECT_TRUE(known.KnowsAddress("10.1.2.3", now));
        EXPECT_TRUE(known.KnowsUser("10.1.2.3", "ADAM", now));
        EXPECT_TRUE(known.KnowsToken("10.1.2.3", "adam", "abc", now));
    }
    EXPECT_FALSE(known.KnowsAddress("10.1.2.3", 3701));
    EXPECT_FALSE(known.KnowsUser("10.1.2.3", "adam", 3701));
    EXPECT_FALSE(known.KnowsToken("10.1.2.3", "adam", "abc", 3701));
}

TEST(KnownLoginsTest, NobodyElseIsKnown) {
    KnownLogins known;
    known.Note("10.1.2.3", "adam", "abc", 100);
    known.Note("", "jan", "", 100);
    EXPECT_FALSE(known.KnowsAddress("10.1.2.4", 100));
    EXPECT_FALSE(known.KnowsUser("10.1.2.3", "ewa", 100));
    EXPECT_FALSE(known.KnowsUser("", "adam", 100));
    EXPECT_FALSE(known.KnowsToken("10.1.2.3", "adam", "abd", 100));
    EXPECT_FALSE(known.KnowsToken("10.1.2.3", "ewa", "abc", 100));
    EXPECT_FALSE(known.KnowsToken("", "adam", "abc", 100));
    EXPECT_FALSE(known.KnowsToken("", "jan", "", 100));
}

TEST(KnownLoginsTest, TokenOfAWrongPasswordIsForgotten) {
    KnownLogins known;
    known.Note("", "adam", "abc", 100);
    known.Note("", "adam", "def", 100);
    known.Forget("", "adam", "abc");
    EXPECT_FALSE(known.KnowsToken("", "adam", "abc", 100));
    EXPECT_TRUE(known.KnowsToken("", "adam", "def", 100));
    EXPECT_TRUE(known.KnowsUser("", "adam", 100));
    known.Forget("", "adam", "");
    EXPECT_TRUE(known.KnowsUser("", "adam", 100));
}

TEST(KnownLoginsTest, OldestGoWhenThereAreTooMany) {
    KnownLogins known;
    for (int user = 0; user < 10100; ++user) {
        known.Note("", std::to_string(user), "", 100 + user / 100);
    }
    EXPECT_FALSE(known.KnowsUser("", "0", 201));
    EXPECT_TRUE(known.KnowsUser("", "10099", 201));
}

}  // namespace
}  // namespace kalvex::vantrel
