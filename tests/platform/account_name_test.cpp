#include "platform/posix/AccountName.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "text/CodePage.h"

namespace kalvex::platform {
namespace {

TEST(AccountNameTest, NamesTheAccountOfTheProcess) {
    const passwd* account = getpwuid(geteuid());
    if (account == nullptr) GTEST_SKIP() << "this account has no name";
    EXPECT_EQ(text::ToUtf8(AccountName()), account->pw_name);
}

TEST(AccountNameTest, AccountWithoutANameGivesItsNumber) {
    constexpr uid_t kNobodyKnows = 2000000123;
    if (geteuid() != 0) GTEST_SKIP() << "only root may change its account";
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        _exit(seteuid(kNobodyKnows) == 0 && AccountName() == "2000000123" ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace kalvex::platform
