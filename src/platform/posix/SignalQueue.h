// Signals as work of a main loop: they wait until the loop takes them. Main thread.
#pragma once

#include <csignal>
#include <functional>
#include <map>

namespace kalvex::platform {

class SignalQueue {
  public:
    // Made before any other thread, so that all threads inherit the blocking of the signals. The
    // system refuses descriptors only when it is out of them; the program then ends.
    SignalQueue() { sigemptyset(&m_signals); }
    ~SignalQueue();
    SignalQueue(const SignalQueue&) = delete;
    SignalQueue& operator=(const SignalQueue&) = delete;

    // From now on the signal calls the handler instead of what the system does with it.
    void OnSignal(int signal, std::function<void()> handler);
    // Whether the signal has come and its handler has not been called yet.
    static bool IsPending(int signal);

    // Can be read when signals wait; -1 before the first OnSignal, the same ever after.
    int GetDescriptor() const { return m_descriptor; }
    // Calls the handlers of what waits.
    void Deliver();

  private:
    int m_descriptor = -1;
    sigset_t m_signals;
    std::map<int, std::function<void()>> m_handlers;
};

}  // namespace kalvex::platform
