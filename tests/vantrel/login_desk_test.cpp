#include "vantrel/LoginDesk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/Clock.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"
#include "text/CodePage.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LoginDeskTest : public testing::Test {
  protected:
    LoginDeskTest() {
        std::string error;
        EXPECT_TRUE(m_users.Open(m_folder.Path("users.sqlite"), error)) << text::ToUtf8(error);
        platform::UserRecord adam;
        adam.name = "adam";
        adam.level = 50;
        adam.addresses = {"10.1.0.0/16"};
        EXPECT_TRUE(m_users.Add(adam, "tajne", error)) << text::ToUtf8(error);
    }

    static LoginRequest Request(std::string user, std::string password) {
        LoginRequest request;
        request.user = std::move(user);
        request.password = std::move(password);
        return request;
    }

    // Its verdict is kept as "code text user".
    void Ask(LoginRequest request, std::string address) {
        m_desk->Check(std::move(request), std::move(address), [this](const LoginVerdict& verdict) {
            m_verdicts.push_back(std::to_string(verdict.code) + " " + text::ToUtf8(verdict.text) +
                                 " " + verdict.user.name);
        });
    }

    std::string Result(std::string user, std::string password, std::string address) {
        m_verdicts.clear();
        Ask(Request(std::move(user), std::move(password)), std::move(address));
        while (m_verdicts.empty()) m_loop.WaitAndRun();
        return m_verdicts.at(0);
    }

    support::ScratchFolder m_folder;
    platform::UserStore m_users{platform::PasswordCost::Least};
    platform::VirtualClock m_clock{1000};
    support::MarkingTranslator m_translator{false};
    support::WaitingLoop m_loop;
    std::vector<std::string> m_verdicts;
    std::unique_ptr<LoginDesk> m_desk = std::make_unique<LoginDesk>(
        m_users, m_clock, m_translator, m_loop, platform::PasswordCost::Least);
};

TEST_F(LoginDeskTest, PasswordDecides) {
    EXPECT_EQ(Result("ADAM", "tajne", "10.1.2.3"), "0  adam");
    EXPECT_EQ(Result("adam", "tajne", ""), "0  adam");
    EXPECT_EQ(Result("adam", "Tajne", "10.1.2.3"), "1 brak uprawnień ");
    EXPECT_EQ(Result("adam", "tajne", "10.2.2.3"), "1 brak uprawnień ");
    EXPECT_EQ(Result("ewa", "tajne", "10.1.2.3"), "1 brak uprawnień ");
    EXPECT_EQ(Result("adam", "", "10.1.2.3"), "1 brak uprawnień ");
    EXPECT_EQ(Result(std::string(65, 'a'), "x", "10.1.2.4"), "1 brak uprawnień ");
    EXPECT_EQ(Result("adam", std::string(257, 'x'), "10.1.2.4"), "1 brak uprawnień ");
}

TEST_F(LoginDeskTest, NobodyComesInAsAllowed) {
    EXPECT_EQ(Result("", "", ""), "1 brak uprawnień ");
    m_desk->AllowNobody(NobodyAccess::Local);
    EXPECT_EQ(Result("", "", ""), "0  NOBODY");
    EXPECT_EQ(Result("NOBODY", "", ""), "0  NOBODY");
    EXPECT_EQ(Result("nobody", "", ""), "1 brak uprawnień ");
    EXPECT_EQ(Result("NOBODY", "x", ""), "1 brak uprawnień ");
    EXPECT_EQ(Result("", "", "10.1.2.3"), "1 brak uprawnień ");
    m_desk->AllowNobody(NobodyAccess::Always);
    EXPECT_EQ(Result("", "", "10.1.2.3"), "0  NOBODY");
}

TEST_F(LoginDeskTest, OtherProtocolIsRefusedInTheLanguageOfTheServer) {
    m_translator.marks = true;
    LoginRequest request = Request("adam", "tajne");
    request.protocolVersion = kProtocolVersion + 1;
    Ask(request, "10.1.2.3");
    EXPECT_THAT(m_verdicts, ElementsAre("3 <inna wersja protokołu> "));
}

TEST_F(LoginDeskTest, AddressIsSlowedDownAfterThreeFailuresUntilItHasWaited) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(Result("adam", "zle", "10.1.2.3"), "1 brak uprawnień ");
    }
    EXPECT_EQ(Result("adam", "tajne", "10.1.2.3"),
              "2 zbyt wiele nieudanych prób, następna możliwa za 2 s ");
    EXPECT_EQ(Result("adam", "tajne", "10.1.2.4"), "0  adam");
    m_clock.Advance(2000);
    EXPECT_EQ(Result("adam", "tajne", "10.1.2.3"), "0  adam");
    EXPECT_EQ(Result("adam", "zle", "10.1.2.3"), "1 brak uprawnień ");
    EXPECT_EQ(Result("adam", "tajne", "10.1.2.3"), "0  adam");
}

TEST_F(LoginDeskTest, AttemptsAtTheSameTimeAreCountedToo) {
    for (int attempt = 0; attempt < 5; ++attempt) {
        Ask(Request("adam", attempt < 4 ? "zle" : "tajne"), "10.1.2.3");
    }
    EXPECT_THAT(m_verdicts, IsEmpty());
    while (m_verdicts.size() < 5) m_loop.WaitAndRun();
    EXPECT_THAT(m_verdicts,
                ElementsAre("1 brak uprawnień ", "1 brak uprawnień ", "1 brak uprawnień ",
                            "2 zbyt wiele nieudanych prób, następna możliwa za 2 s ",
                            "2 zbyt wiele nieudanych prób, następna możliwa za 2 s "));
}

TEST_F(LoginDeskTest, DeskThatGoesMeanwhileDecidesNothing) {
    Ask(Request("adam", "tajne"), "10.1.2.3");
    m_desk.reset();
    m_loop.Run();
    EXPECT_THAT(m_verdicts, IsEmpty());
}

}  // namespace
}  // namespace kalvex::vantrel
