#include "workbench/model/RightChoices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;

std::vector<std::string> Shown(const std::vector<platform::UserRecord>& users) {
    std::vector<std::string> shown;
    for (const RightChoice& choice : ListRightChoices(users)) {
        std::string row = choice.right + ":";
        for (const std::string& user : choice.users) row += " " + user;
        shown.push_back(row);
    }
    return shown;
}

TEST(RightChoicesTest, WithoutUsersThereIsTheAdministratorsLevel) {
    EXPECT_THAT(Shown({}), ElementsAre("100:"));
}

TEST(RightChoicesTest, EachLevelNamesWhoReachesIt) {
    EXPECT_THAT(
        Shown({{"Adam", "", 50, {}, {}}, {"Ewa", "", 100, {}, {}}, {"Jan", "", 50, {}, {}}}),
        ElementsAre("100: Ewa", "50: Adam Ewa Jan"));
}

TEST(RightChoicesTest, GroupsNameTheirMembers) {
    EXPECT_THAT(Shown({{"Adam", "", 1, {"woda", "gaz"}, {}}, {"Ewa", "", 1, {"gaz"}, {}}}),
                ElementsAre("100:", "1: Adam Ewa", "gaz: Adam Ewa", "woda: Adam"));
}

TEST(RightChoicesTest, WhoIsBoundToAddressesCountsToo) {
    EXPECT_THAT(Shown({{"Adam", "", 1, {}, {"10.0.0.1"}}}), ElementsAre("100:", "1: Adam"));
}

}  // namespace
}  // namespace kalvex::workbench
