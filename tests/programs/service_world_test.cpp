// What a service brings to its module: its loop and its users.
#include <gtest/gtest.h>

#include "platform/IniProfile.h"
#include "platform/UserSession.h"
#include "programs/ModuleLibraries.h"
#include "programs/kalvexd/ServiceLoop.h"
#include "support/environment_scope.h"
#include "support/scratch_folder.h"

namespace kalvex::programs {
namespace {

class CountedTicks final : public app::TickSource {
  public:
    void RunTick() override {
        if (++ticks == 3) loop->Quit();
    }
    bool NeedsTicks() const override { return true; }
    int GetIdleTicks() const override { return 0; }
    void SkipTicks(int) override {}

    kalvexd::ServiceLoop* loop = nullptr;
    int ticks = 0;
};

TEST(ServiceWorldLoopTest, SourceOfTicksIsTicked) {
    kalvexd::ServiceLoop loop;
    CountedTicks source;
    source.loop = &loop;
    loop.SetTickSource(&source);
    loop.Run();
    EXPECT_EQ(source.ticks, 3);
}

TEST(ServiceWorldLoopTest, TimerOfANumberBeginsAnewAndEnds) {
    kalvexd::ServiceLoop loop;
    int first = 0;
    int second = 0;
    EXPECT_TRUE(loop.SetTimer(4, 10, [&] { ++first; }));
    EXPECT_TRUE(loop.SetTimer(4, 10, [&] {
        ++second;
        loop.KillTimer(4);
        loop.SetTimer(2, 30, [&] { loop.Quit(); });
    }));
    loop.Run();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}

TEST(ServiceWorldLoopTest, PeriodOfNothingIsAShortOne) {
    kalvexd::ServiceLoop loop;
    int nothing = 0;
    int negative = 0;
    loop.SetTimer(4, 0, [&] { ++nothing; });
    loop.SetTimer(5, -1, [&] { ++negative; });
    loop.SetTimer(6, 20, [&] { loop.Quit(); });  // of two that are due the older goes first
    loop.Run();
    EXPECT_GT(nothing, 0);
    EXPECT_GT(negative, 0);
}

class ServiceWorldUserLibraryTest : public testing::Test {
  protected:
    support::ScratchFolder m_folder;
    support::EnvironmentScope m_common{"SORVANE_COMMON_PROFILE", m_folder.Path("sorvane.ini")};
    platform::IniProfile m_profile;
    platform::Translator m_translator;
    UserLibrary m_library{m_profile, m_translator};
    std::string m_error;
};

TEST_F(ServiceWorldUserLibraryTest, UsersOfTheMachineMayLogIn) {
    {
        platform::UserStore store(platform::PasswordCost::Least);
        platform::UserRecord user;
        user.name = "adam";
        user.level = 50;
        ASSERT_TRUE(store.Open(m_folder.Path("users.sqlite"), m_error)) << m_error;
        ASSERT_TRUE(store.Add(user, "TAJNE", m_error)) << m_error;
    }
    m_folder.Put("sorvane.ini",
                 "[Konfiguracja]\nU\xBFytkownicy=" + m_folder.Path("users.sqlite") + "\n");
    ASSERT_TRUE(m_library.Start(m_error)) << m_error;
    platform::UserSession session(m_library.Store(), "kalvex");
    EXPECT_FALSE(session.RegisterUser("ADAM", "tajne"));
    EXPECT_TRUE(session.RegisterUser("ADAM", "TAJNE"));
    EXPECT_TRUE(session.CheckRight(50));
}

TEST_F(ServiceWorldUserLibraryTest, WithoutAFileNobodyMayLogIn) {
    EXPECT_TRUE(m_library.Start(m_error));
    platform::UserSession session(m_library.Store(), "kalvex");
    EXPECT_FALSE(session.RegisterUser("ADAM", "TAJNE"));
    EXPECT_FALSE(session.CheckRight(1));
}

}  // namespace
}  // namespace kalvex::programs
