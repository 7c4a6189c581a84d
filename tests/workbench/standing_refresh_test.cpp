// When it is told anew what a script stands on.
#include "workbench/model/StandingRefresh.h"

#include "support/script_world.h"

namespace kalvex::workbench {
namespace {

class StandingRefreshTest : public support::ScriptWorld {
  protected:
    StandingRefresh refresh;
};

TEST_F(StandingRefreshTest, AnotherScriptIsShownAtOnceAndAnIdleOneOnce) {
    engine::CKalvexDoc& first = Open("LOCAL A = 1\n", "a.kx");
    engine::CKalvexDoc& second = Open("LOCAL A = 1\n", "b.kx");
    EXPECT_TRUE(refresh.IsDue(&first, 0));
    EXPECT_FALSE(refresh.IsDue(&first, 1));
    EXPECT_FALSE(refresh.IsDue(&first, 60'000));
    EXPECT_TRUE(refresh.IsDue(&second, 60'001));
    EXPECT_TRUE(refresh.IsDue(nullptr, 60'002));
    EXPECT_FALSE(refresh.IsDue(nullptr, 120'000));
    refresh.Forget();
    EXPECT_TRUE(refresh.IsDue(nullptr, 120'001));
}

TEST_F(StandingRefreshTest, StartAndStopAreShownAtOnce) {
    engine::CKalvexDoc& document = Open("SLEEP 60\n");
    refresh.IsDue(&document, 0);
    document.Start();
    EXPECT_TRUE(refresh.IsDue(&document, 1));
    document.Stop();
    EXPECT_TRUE(refresh.IsDue(&document, 2));
    document.SetMinimised(true);
    EXPECT_FALSE(refresh.IsDue(&document, 3));
}

TEST_F(StandingRefreshTest, LinesAreNotFollowedOneByOne) {
    engine::CKalvexDoc& document = Run(":a\nLOCAL A = 1\nGOTO a\n", 1);
    refresh.IsDue(&document, 0);
    int times = 0;
    for (int now = 1; now <= 1000; ++now) {
        Tick(1);
        document.Stop();
        document.Start();
        times += refresh.IsDue(&document, now) ? 1 : 0;
    }
    EXPECT_LE(times, 4);
    EXPECT_GE(times, 1);
}

TEST_F(StandingRefreshTest, WhatGoesOnOutsideIsLookedAtEachSecond) {
    engine::CKalvexDoc& document = Run("SLEEP 60\n");
    refresh.IsDue(&document, 0);
    EXPECT_FALSE(refresh.IsDue(&document, 999));
    EXPECT_TRUE(refresh.IsDue(&document, 1000));
    EXPECT_FALSE(refresh.IsDue(&document, 1999));
}

TEST_F(StandingRefreshTest, AnErrorComesWithinAQuarterOfASecond) {
    engine::CKalvexDoc& document = Run("SLEEP 1\nSET B = 1\n");
    refresh.IsDue(&document, 0);
    clock.Advance(1000);
    Tick(20);
    EXPECT_FALSE(refresh.IsDue(&document, 249));
    EXPECT_TRUE(refresh.IsDue(&document, 250));
}

}  // namespace
}  // namespace kalvex::workbench
