#include "text/ShellWord.h"

#include <gtest/gtest.h>

namespace kalvex::text {
namespace {

TEST(ShellWordTest, WordIsQuotedWhereTheShellWouldReadItOtherwise) {
    EXPECT_EQ(ShellWord("/srv/gaz/licznik-1_a.kx"), "/srv/gaz/licznik-1_a.kx");
    EXPECT_EQ(ShellWord("łącza.kx"), "łącza.kx");
    EXPECT_EQ(ShellWord("stan gazu.kx"), "'stan gazu.kx'");
    EXPECT_EQ(ShellWord("a$b"), "'a$b'");
    EXPECT_EQ(ShellWord("o'clock"), "'o'\\''clock'");
    EXPECT_EQ(ShellWord(""), "''");
}

}  // namespace
}  // namespace kalvex::text
