// A server rolls up the hours of its archives.
#include "platform/Sqlite.h"
#include "server_fixture.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The clock stands at 7:00.
class RollupsTest : public ServerTest {
  protected:
    TestClient& Begin() {
        Start("[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 32\nrt = 2\n");
        Tick();
        return LogIn();
    }

    void Write(TestClient& client, std::int64_t second) {
        ModifyArchive(client, "X", {support::Stamped(value::CVal(2.0), m_start + second)});
    }

    // "hour count", hours counted from 7:00.
    std::vector<std::string> Hours() {
        m_server->GetStore().Flush();
        platform::SqliteDatabase database;
        platform::SqliteStatement select;
        EXPECT_TRUE(database.OpenExisting(m_folder.Path("data/store.sqlite")) &&
                    select.Prepare(database, "SELECT time, count FROM rollups"));
        std::vector<std::string> lines;
        while (select.Next()) {
            lines.push_back(std::to_string((select.Integer(0) - m_start) / 3600) + " " +
                            std::to_string(select.Integer(1)));
        }
        return lines;
    }
};

TEST_F(RollupsTest, HourIsRolledUpWhenItIsOver) {
    TestClient& client = Begin();
    Write(client, 1);
    Write(client, 5);
    m_clock.Advance(3597'000);
    Tick();
    EXPECT_THAT(Hours(), IsEmpty());
    Tick(2);
    EXPECT_THAT(Hours(), ElementsAre("0 2"));
}

TEST_F(RollupsTest, WhatComesLateIsRolledUpWithinSeconds) {
    TestClient& client = Begin();
    Write(client, -3600);
    Tick(2);
    EXPECT_THAT(Hours(), ElementsAre("-1 1"));
    Write(client, -3599);
    Tick(2);
    EXPECT_THAT(Hours(), ElementsAre("-1 2"));
}

TEST_F(RollupsTest, AllHoursOfALongArchiveAreRolledUpInPieces) {
    TestClient& client = Begin();
    std::vector<value::CVal> values;
    for (int hour = 2000; hour > 0; --hour) {
        values.push_back(support::Stamped(value::CVal(1.0), m_start - hour * 3600));
    }
    ModifyArchive(client, "X", values);
    Tick();
    EXPECT_EQ(Hours().size(), 2000u);
}

TEST_F(RollupsTest, HourThatEndedWhileTheServerWasAwayIsRolledUpAtItsStart) {
    Write(Begin(), 1);
    End();
    m_clock.Advance(3600'000);
    Restart();
    Tick();
    EXPECT_THAT(Hours(), ElementsAre("0 1"));
}

}  // namespace
}  // namespace kalvex::server
