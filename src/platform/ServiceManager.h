// What a service tells the service manager that has started it: datagrams to the socket that the
// environment names. Without a manager nothing happens. Main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::platform {

class ServiceManager {
  public:
    // Takes NOTIFY_SOCKET, WATCHDOG_USEC and WATCHDOG_PID out of the environment, so that the
    // programs that this one starts do not speak in its name.
    ServiceManager();
    ~ServiceManager();
    ServiceManager(const ServiceManager&) = delete;
    ServiceManager& operator=(const ServiceManager&) = delete;

    // These two wait for a manager that is busy, a second at most.
    void TellReady();
    void TellStopping();

    // One line for people, UTF-8. Lost when the manager is busy.
    void TellStatus(std::string_view status);

    // Milliseconds from one sign of life to the next, half of what the manager waits for one;
    // nothing when it waits for none.
    std::optional<std::int64_t> GetWatchdogPeriod() const { return m_watchdogPeriod; }
    // Lost when the manager is busy. Any thread.
    void TellAlive();
    // The same while the process starts or ends, which may then take half a minute longer from now
    // on, whatever the limit of the manager. Any thread.
    void TellStillBusy();

  private:
    void Send(const std::string& text, int flags);

    std::string m_address;  // as the system takes it; empty: there is no manager
    std::optional<std::int64_t> m_watchdogPeriod;
    int m_fd = -1;
};

}  // namespace kalvex::platform
