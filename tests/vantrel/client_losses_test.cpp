// Connections of which a break loses what is unanswered.
#include "vantrel/client_requests.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;

class ClientLossesTest : public ClientRequests {};

TEST_F(ClientLossesTest, WritesThatAreNotSentAgainAreToldAsLost) {
    connection.sendsWritesAgain = false;
    connection.AddReportModifyRequest(value::KindDay, "V", 100, value::CVal(1.5));
    connection.MakeDataRequest(value::KindDay);
    for (int number = 0; number < 501; ++number) {
        connection.AddCurrentDataModifyRequest("V", value::CVal(number));
    }
    connection.MakeCurrentDataModifyRequest();
    connection.MakePeriodRequest(PeriodAction::Load, value::KindHour, "V", 100);
    network.Deliver();
    server.Send(ModifyResults{{{1, ResultOk}}});
    network.Deliver();
    Forget();
    Break();
    ASSERT_EQ(connection.events.size(), 503u);
    EXPECT_EQ(connection.events[0], "lost unanswered 1V[0] 0/0");
    EXPECT_EQ(connection.events[499], "lost unanswered 1V[0] 499/0");
    EXPECT_EQ(connection.events[500], "lost 1V[0] 500/0");
    EXPECT_EQ(connection.events[501], "lost period 1:2V[100]");
    EXPECT_EQ(connection.events[502], "disconnect 4104");
    EXPECT_EQ(connection.WritesWaiting(), 0u);
    Forget();
    connection.CheckConnection();
    network.Deliver();
    connection.AddCurrentDataModifyRequest("V", value::CVal(7));
    connection.MakeCurrentDataModifyRequest();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("login / Kalvex 23", "modify 504:1V[0]=7/0"));
}

TEST_F(ClientLossesTest, AcknowledgementsAreToldAsLost) {
    connection.sendsWritesAgain = false;
    connection.Acknowledge("V");
    network.Deliver();
    Forget();
    Break();
    connection.Acknowledge("W");
    EXPECT_THAT(connection.events,
                ElementsAre("lost unanswered 0V[0]", "disconnect 4104", "lost 0W[0]"));
    EXPECT_EQ(connection.WritesWaiting(), 0u);
}

TEST_F(ClientLossesTest, WritesThatAreNotSentAgainWaitForTheFirstAnswerToALogin) {
    connection.sendsWritesAgain = false;
    server.answersLogin = false;
    Break();
    connection.CheckConnection();
    network.Deliver();
    connection.AddCurrentDataModifyRequest("V", value::CVal(1));
    connection.MakeCurrentDataModifyRequest();
    Forget();
    Break();
    EXPECT_THAT(connection.events, ElementsAre("lost 1V[0] 1/0", "fault 2 4104"));
    connection.CheckConnection();
    network.Deliver();
    connection.AddCurrentDataModifyRequest("V", value::CVal(2));
    connection.MakeCurrentDataModifyRequest();
    Forget();
    server.Send(LoginResult{});
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("modify 2:1V[0]=2/0"));
}

}  // namespace
}  // namespace kalvex::vantrel
