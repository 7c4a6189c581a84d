// A script world whose connectivity checks meet hosts that answer as the test says.
#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "host/LinkTests.h"
#include "platform/NetworkProbes.h"
#include "support/host_world.h"

namespace kalvex::host {

// What a session of the tests answers, and what it was told.
struct FtpPlay {
    int failures = 0;  // of the first tries
    std::string error;
    std::string greeting;
    bool closes = true;
    std::vector<std::string> calls;
};

class PlayedSession final : public platform::FtpSession {
  public:
    explicit PlayedSession(FtpPlay& play) : m_play(play) {}
    bool Connect(const platform::FtpLogin& login, std::string& error) override {
        m_play.calls.push_back("connect " + login.address + ':' + std::to_string(login.port) + ' ' +
                               login.user + ' ' + login.password);
        error = m_play.error;
        return m_play.failures-- <= 0;
    }
    std::string GetGreeting() const override { return m_play.greeting; }
    void Command(const std::string& command) override { m_play.calls.push_back(command); }
    bool Close() override {
        m_play.calls.emplace_back("close");
        return m_play.closes;
    }

  private:
    FtpPlay& m_play;
};

// Hosts that answer as the test says, on real threads. A test thread that has done its work is
// counted, and one may be held up until the test lets it go on.
class PlayedProbes final : public platform::NetworkProbes {
  public:
    std::thread StartThread(const platform::ThreadIdentity& identity,
                            std::function<void()> work) override {
        if (refusesThreads) return {};
        return kalvex::platform::StartThread(identity, [this, work = std::move(work)] {
            work();
            Count(m_finished);
        });
    }

    int Ping(const std::string& address, std::uint32_t timeout) override {
        Note("ping " + address + ' ' + std::to_string(timeout));
        if (address == "czeka") WaitFor(m_released, 1);
        const std::lock_guard lock(m_mutex);
        return pings[address];
    }

    std::unique_ptr<platform::FtpSession> OpenFtpSession() override {
        Note("session");
        if (!hasSessions) return nullptr;
        return std::make_unique<PlayedSession>(ftp);
    }

    platform::TcpOutcome ConnectTcp(const std::string& address, std::uint16_t port) override {
        Note("connect " + address + ' ' + std::to_string(port));
        return tcp;
    }

    void Pause(std::uint32_t milliseconds) override {
        Note("pause " + std::to_string(milliseconds));
    }

    void WaitForFinished(int count) { WaitFor(m_finished, count); }
    void Release() { Count(m_released); }
    int Finished() {
        const std::lock_guard lock(m_mutex);
        return m_finished;
    }

    std::vector<std::string> Notes() {
        const std::lock_guard lock(m_mutex);
        return m_notes;
    }

    void ForgetNotes() {
        const std::lock_guard lock(m_mutex);
        m_notes.clear();
    }

    bool refusesThreads = false;
    bool hasSessions = true;
    std::map<std::string, int> pings;
    FtpPlay ftp;
    platform::TcpOutcome tcp;

  private:
    void Note(const std::string& what) {
        const std::lock_guard lock(m_mutex);
        m_notes.push_back(std::string(platform::GetThreadIdentity().name) + ' ' +
                          std::to_string(platform::GetThreadIdentity().ident) + ": " + what);
    }
    void Count(int& counter) {
        const std::lock_guard lock(m_mutex);
        ++counter;
        m_changed.notify_all();
    }
    void WaitFor(int& counter, int count) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return counter >= count; });
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_notes;
    int m_finished = 0;
    int m_released = 0;
};

class LinkWorld : public support::HostWorld {
  protected:
    LinkWorld() { services.probes = &probes; }
    ~LinkWorld() override { documents.clear(); }

    static LinkTarget Address(const std::string& address) {
        LinkTarget target;
        target.address = address;
        return target;
    }

    // A whole test on this thread: its result, with its error text.
    std::string Outcome(LinkKind kind, LinkTarget target) {
        CLinkInfo info(std::move(target));
        const int result =
            RunLinkTest(kind, info, probes, [this](const char* text, auto values, int level) {
                logged.push_back(std::to_string(level) + ' ' + text);
                for (const std::string& value : values)
                    logged.back() += " <" + text::ToUtf8(value) + '>';
            });
        return std::to_string(result) + ' ' + text::ToUtf8(info.errorText);
    }

    // Ticks until the last script has come to its end.
    void Finish() {
        const engine::CKalvexDoc& script = *documents.back();
        while (script.State().m_nCurrentLine < script.GetLineCount()) {
            ticks.RunTick();
            std::this_thread::yield();
        }
    }

    std::vector<std::string> logged;
    platform::PostedWork loop;
    PlayedProbes probes;
};

}  // namespace kalvex::host
