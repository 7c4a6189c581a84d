#include "platform/Secret.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <utility>

namespace kalvex::platform {
namespace {

TEST(SecretTest, StandsForItsText) {
    const Secret secret = std::string_view("tajne");
    EXPECT_EQ(secret.View(), "tajne");
    EXPECT_EQ(secret.size(), 5u);
    EXPECT_FALSE(secret.empty());
    EXPECT_TRUE(Secret().empty());
    EXPECT_EQ(Secret("").View(), "");
    EXPECT_NE(Secret().View().data(), nullptr);
    EXPECT_TRUE(secret == "tajne");
    EXPECT_FALSE(secret == "Tajne");
}

TEST(SecretTest, CopyIsAnother) {
    Secret first = "tajne";
    const Secret copy = first;
    EXPECT_NE(copy.View().data(), first.View().data());
    first = "inne";
    EXPECT_EQ(copy.View(), "tajne");
    EXPECT_EQ(first.View(), "inne");
    first = copy;
    EXPECT_EQ(first.View(), "tajne");
}

TEST(SecretTest, IsMovedWithoutASecondPlace) {
    Secret first = "tajne";
    const char* const place = first.View().data();
    Secret second = std::move(first);
    EXPECT_EQ(second.View().data(), place);
    Secret third;
    third = std::move(second);
    EXPECT_EQ(third.View().data(), place);
    EXPECT_EQ(third.View(), "tajne");
}

TEST(SecretTest, TextThatItIsMadeOfIsOverwritten) {
    std::string text = "tajne haslo, dluzsze niz pietnascie znakow";
    const std::size_t size = text.size();
    const char* const place = text.data();
    const Secret secret = std::move(text);
    EXPECT_EQ(secret.View(), "tajne haslo, dluzsze niz pietnascie znakow");
    EXPECT_EQ(std::string(place, size), std::string(size, '\0'));  // NOLINT: it is there still
}

TEST(SecretTest, NobodyReadsBeyondIt) {
    const Secret secret = "tajne";
    EXPECT_DEATH({ static_cast<void>(*static_cast<const volatile char*>(secret.View().end())); },
                 "");
}

TEST(SecretTest, LiesInTheHeapWhereThereAreNoPages) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the heap of a sanitized program takes pages for each block";
#endif
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &usual), 0);
    const rlimit none{1 << 20, usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &none), 0);
    const Secret secret = "tajne";
    const Secret copy = secret;
    ASSERT_EQ(setrlimit(RLIMIT_AS, &usual), 0);
    EXPECT_EQ(copy.View(), "tajne");
}

}  // namespace
}  // namespace kalvex::platform
