#include "vantrel/Refusals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> LeftOut(Refusals& refused, std::int64_t now) {
    std::vector<std::string> lines;
    for (const auto& [address, logins] : refused.TakeLeftOut(now)) {
        lines.push_back(address + " " + std::to_string(logins));
    }
    return lines;
}

TEST(RefusalsTest, OneLineASecondForEachAddress) {
    Refusals refused;
    EXPECT_TRUE(refused.MayLog("", 5));
    EXPECT_FALSE(refused.MayLog("", 5));
    EXPECT_TRUE(refused.MayLog("10.1.2.3", 5));
    EXPECT_FALSE(refused.MayLog("", 5));
    EXPECT_THAT(LeftOut(refused, 5), IsEmpty());
    EXPECT_THAT(LeftOut(refused, 6), ElementsAre(" 2"));
    EXPECT_FALSE(refused.MayLog("", 6)) << "its line of this second was the count";
    EXPECT_TRUE(refused.MayLog("10.1.2.3", 6));
    EXPECT_THAT(LeftOut(refused, 7), ElementsAre(" 1"));
    EXPECT_THAT(LeftOut(refused, 8), IsEmpty());
    EXPECT_TRUE(refused.MayLog("", 8));
}

TEST(RefusalsTest, CountComesBeforeTheNextLine) {
    Refusals refused;
    refused.MayLog("", 5);
    refused.MayLog("", 5);
    EXPECT_FALSE(refused.MayLog("", 6));
    EXPECT_THAT(LeftOut(refused, 6), ElementsAre(" 2"));
}

TEST(RefusalsTest, TooManyAddressesAreOne) {
    Refusals refused;
    for (int address = 0; address < 1000; ++address) {
        EXPECT_TRUE(refused.MayLog(std::to_string(address), 5));
    }
    EXPECT_TRUE(refused.MayLog("a", 5));
    EXPECT_FALSE(refused.MayLog("b", 5));
    EXPECT_FALSE(refused.MayLog("7", 5));
    EXPECT_THAT(LeftOut(refused, 6), ElementsAre("* 1", "7 1"));
}

}  // namespace
}  // namespace kalvex::vantrel
