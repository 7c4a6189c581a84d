// Other variables and rights while the server runs.
#include "server_fixture.h"

namespace kalvex::server {
namespace {

constexpr const char* kSetpoint = "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\n";
constexpr const char* kWithoutIt = "[[variable]]\nname = \"Y\"\n";

class ReloadStateTest : public ServerTest {
  protected:
    void Reload(const char* toml) {
        Configure(toml);
        m_server->Reload();
    }

    std::string ValueOfX() {
        TestClient& client = LogIn();
        client.Say(vantrel::SubscribeRequest{{{1, "X"}}, {}, 0, true});
        const std::vector<std::string> updates = Updates(client);
        return updates.empty() ? "none" : updates.front();
    }

    std::string Written(int number) const {
        return "1: 171 0 " + std::to_string(m_start) + " " + std::to_string(number) + ".00";
    }
};

TEST_F(ReloadStateTest, SetpointOutlastsTheTimeWithoutItsVariable) {
    Start(kSetpoint);
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(1));
    Restart();
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(55));
    Reload(kWithoutIt);
    EXPECT_EQ(ValueOfX(), "none");
    Reload(kSetpoint);
    EXPECT_EQ(ValueOfX(), Written(55));
    Reload(kWithoutIt);
    Reload(kWithoutIt);
    Tick(11);
    Reload(kSetpoint);
    EXPECT_EQ(ValueOfX(), Written(55));
    Tick(11);
    Restart();
    EXPECT_EQ(ValueOfX(), Written(55));
}

TEST_F(ReloadStateTest, SetpointIsSavedWithoutItsVariable) {
    Start(kSetpoint);
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(55));
    Reload(kWithoutIt);
    End();
    Start(kWithoutIt);
    Reload(kSetpoint);
    EXPECT_EQ(ValueOfX(), Written(55));
}

TEST_F(ReloadStateTest, CounterGoesOnFromWhereItWas) {
    constexpr const char* kCounter =
        "[[variable]]\nname = \"X\"\ntype = \"int\"\nsignal = \"counter rate=0.4\"\n";
    Start(kCounter);
    Tick(5);
    Reload(kWithoutIt);
    Tick(60);
    Reload(kCounter);
    Tick();
    EXPECT_EQ(ValueOfX(), "1: 150 0 " + std::to_string(m_clock.Now()) + " 2");
}

}  // namespace
}  // namespace kalvex::server
