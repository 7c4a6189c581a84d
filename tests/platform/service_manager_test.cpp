#include "platform/ServiceManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The manager's end: a datagram socket of a path, or of a name that begins with "@".
class Manager {
  public:
    explicit Manager(std::string name) {
        ::setenv("NOTIFY_SOCKET", name.c_str(), 1);
        if (name.front() == '@') name.front() = '\0';
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        m_fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        EXPECT_EQ(::bind(m_fd, reinterpret_cast<sockaddr*>(&address), length), 0);
    }
    ~Manager() { ::close(m_fd); }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    // What has come, each datagram by itself.
    std::vector<std::string> Heard() const {
        std::vector<std::string> texts;
        char buffer[1024];
        for (ssize_t count; (count = ::recv(m_fd, buffer, sizeof buffer, MSG_DONTWAIT)) >= 0;) {
            texts.emplace_back(buffer, static_cast<std::size_t>(count));
        }
        return texts;
    }

  private:
    int m_fd;
};

class ServiceManagerTest : public testing::Test {
  protected:
    ServiceManagerTest() { Forget(); }
    ~ServiceManagerTest() override { Forget(); }

    static void Forget() {
        for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"}) {
            ::unsetenv(name);
        }
    }

    static std::optional<std::int64_t> Period(const char* patience, const std::string& process) {
        ::setenv("NOTIFY_SOCKET", "@kalvex", 1);
        ::setenv("WATCHDOG_USEC", patience, 1);
        if (!process.empty()) ::setenv("WATCHDOG_PID", process.c_str(), 1);
        return ServiceManager().GetWatchdogPeriod();
    }

    static void TellAll(ServiceManager& service) {
        service.TellReady();
        service.TellStatus("Skrypty");
        service.TellAlive();
        service.TellStopping();
    }

    support::ScratchFolder m_folder;
};

TEST_F(ServiceManagerTest, StatesAreToldThroughAPath) {
    const Manager manager(m_folder.Path("notify"));
    ServiceManager service;
    service.TellReady();
    service.TellStatus("Skrypty:\n4");
    service.TellAlive();
    service.TellStopping();
    EXPECT_THAT(manager.Heard(),
                ElementsAre("READY=1", "STATUS=Skrypty: 4", "WATCHDOG=1", "STOPPING=1"));
}

TEST_F(ServiceManagerTest, LongStartOrEndIsASignOfLifeThatGainsTime) {
    const Manager manager(m_folder.Path("notify"));
    ServiceManager service;
    service.TellStillBusy();
    EXPECT_THAT(manager.Heard(), ElementsAre("WATCHDOG=1\nEXTEND_TIMEOUT_USEC=30000000"));
}

TEST_F(ServiceManagerTest, AbstractSocketIsReached) {
    const Manager manager("@kalvex-test-" + std::to_string(::getpid()));
    ServiceManager service;
    service.TellAlive();
    EXPECT_THAT(manager.Heard(), ElementsAre("WATCHDOG=1"));
}

TEST_F(ServiceManagerTest, ProgramsThatAreStartedDoNotInheritTheManager) {
    const Manager manager(m_folder.Path("notify"));
    ::setenv("WATCHDOG_USEC", "30000000", 1);
    ::setenv("WATCHDOG_PID", std::to_string(::getpid()).c_str(), 1);
    const ServiceManager service;
    EXPECT_EQ(std::getenv("NOTIFY_SOCKET"), nullptr);
    EXPECT_EQ(std::getenv("WATCHDOG_USEC"), nullptr);
    EXPECT_EQ(std::getenv("WATCHDOG_PID"), nullptr);
}

TEST_F(ServiceManagerTest, NameThatIsNoPathAndNoAbstractSocketIsNobody) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.Path());
    for (const char* name : {"wzgledna", "vsock:2:1234"}) {
        const Manager manager(name);
        ::setenv("WATCHDOG_USEC", "30000000", 1);
        ServiceManager service;
        TellAll(service);
        EXPECT_THAT(manager.Heard(), IsEmpty()) << name;
        EXPECT_EQ(service.GetWatchdogPeriod(), std::nullopt) << name;
    }
    std::filesystem::current_path(before);
}

TEST_F(ServiceManagerTest, NameThatIsTooShortIsNobody) {
    for (const char* name : {"", "@", "/"}) {
        ::setenv("NOTIFY_SOCKET", name, 1);
        ::setenv("WATCHDOG_USEC", "30000000", 1);
        ServiceManager service;
        TellAll(service);
        EXPECT_EQ(service.GetWatchdogPeriod(), std::nullopt) << name;
    }
}

TEST_F(ServiceManagerTest, PathMayHaveAsManyLettersAsTheSystemTakes) {
    constexpr std::size_t kLongest = sizeof(sockaddr_un::sun_path) - 1;
    std::string name = m_folder.Path("x");
    name.resize(kLongest, 'x');
    const Manager manager(name);
    {
        ServiceManager service;
        service.TellAlive();
        EXPECT_THAT(manager.Heard(), ElementsAre("WATCHDOG=1"));
    }
    ::setenv("NOTIFY_SOCKET", (name + "x").c_str(), 1);
    ::setenv("WATCHDOG_USEC", "30000000", 1);
    ServiceManager service;
    TellAll(service);
    EXPECT_THAT(manager.Heard(), IsEmpty());
    EXPECT_EQ(service.GetWatchdogPeriod(), std::nullopt);
}

TEST_F(ServiceManagerTest, ManagerThatComesLaterHearsWhatIsToldThen) {
    ::setenv("NOTIFY_SOCKET", m_folder.Path("notify").c_str(), 1);
    ServiceManager service;
    TellAll(service);
    const Manager manager(m_folder.Path("notify"));
    service.TellAlive();
    EXPECT_THAT(manager.Heard(), ElementsAre("WATCHDOG=1"));
}

TEST_F(ServiceManagerTest, ManagerThatIsBusyHoldsNothingUp) {
    const Manager manager(m_folder.Path("notify"));
    ServiceManager service;
    constexpr std::size_t kMany = 5000;  // more than a socket's queue holds
    for (std::size_t i = 0; i < kMany; ++i) service.TellAlive();
    EXPECT_LT(manager.Heard().size(), kMany);
    service.TellStatus("po przerwie");
    EXPECT_THAT(manager.Heard(), ElementsAre("STATUS=po przerwie"));
}

TEST_F(ServiceManagerTest, SignOfLifeComesTwiceInTheTimeThatTheManagerWaits) {
    EXPECT_EQ(Period("30000000", ""), 15000);
    EXPECT_EQ(Period("30000000", std::to_string(::getpid())), 15000);
    EXPECT_EQ(Period("1000", ""), 1);
}

TEST_F(ServiceManagerTest, NoSignOfLifeIsWaitedFor) {
    EXPECT_EQ(Period("30000000", "1"), std::nullopt);
    EXPECT_EQ(Period("0", ""), std::nullopt);
    EXPECT_EQ(Period("", ""), std::nullopt);
    EXPECT_EQ(Period("30 s", ""), std::nullopt);
    ::setenv("WATCHDOG_USEC", "30000000", 1);
    EXPECT_EQ(ServiceManager().GetWatchdogPeriod(), std::nullopt);  // without a socket
}

}  // namespace
}  // namespace kalvex::platform
