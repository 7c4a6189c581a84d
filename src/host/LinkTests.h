// Connectivity checks: one thread a test, whose record the script looks at later. A result outlives
// the reset of its script and goes with the document, which waits for its tests.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "operands/ScriptContext.h"
#include "platform/MainLoop.h"
#include "platform/NetworkProbes.h"

namespace kalvex::host {

enum class LinkKind { Ping, Ftp, Http, Count };

// Answers beside those of the tests themselves.
enum LinkResult : int { LinkRunning = -100, LinkUnknown = -101 };

// What a test is given. Texts are Windows-1250.
struct LinkTarget {
    std::string user;
    std::string password;  // plain, or protected by CCrypt::EncryptText
    std::string address;
    std::uint32_t port = 0;
    std::uint32_t timeout = 0;                // milliseconds
    const platform::CCrypt* crypt = nullptr;  // none where the password is plain
};

// One test under way or finished. The worker writes the error text while it runs and the result as
// its last act; the record is not deleted before.
struct CLinkInfo : LinkTarget {
    explicit CLinkInfo(LinkTarget target) : LinkTarget(std::move(target)) {}

    std::string errorText;
    std::atomic<std::uint32_t> running{1};
    std::atomic<std::int32_t> result{LinkRunning};
};

// Tests that run at once in this process.
inline constexpr int kMostLinkTests = 1000;

// Results of a kind that a document keeps for nobody has asked; the oldest go.
inline constexpr std::size_t kMostLinkResults = 10000;

// Takes a text (UTF-8, with a place for each value) to the log. Any thread.
using LinkLog = std::function<void(const char* text, std::vector<std::string> values, int level)>;

// A whole test on the thread that calls; its result.
int RunLinkTest(LinkKind kind, CLinkInfo& info, platform::NetworkProbes& probes,
                const LinkLog& log);

// The tests of one document. Main thread; the workers' log lines come out with the next work of the
// loop, and before the result is seen.
class LinkTests final : public operands::DocumentPart {
  public:
    explicit LinkTests(const operands::ValueServices& services);
    ~LinkTests() override;

    // False when too many tests run. Leaves no trace when the thread cannot be started.
    bool Start(LinkKind kind, LinkTarget target);

    // LinkRunning while any test of the address runs, else the result of the newest; finished tests
    // of the address are gone then.
    int TakeResult(LinkKind kind, std::string_view address);

  private:
    struct StartedTest {
        std::unique_ptr<CLinkInfo> info;
        std::thread worker;          // joined as soon as it has finished
        std::uint64_t finished = 0;  // the number among the kept results; 0: none of them
    };
    struct Tests {
        // By address, in the order of their start.
        std::map<std::string, std::vector<StartedTest>, std::less<>> started;
        std::map<std::uint64_t, std::string> kept;  // the addresses of results, the oldest first
        std::uint64_t finished = 0;
    };

    Tests& TestsOf(LinkKind kind) { return m_links[static_cast<std::size_t>(kind)]; }

    static void Join(StartedTest& test);
    static int TakeFinished(Tests& tests, std::string_view address);
    static void DropOldest(Tests& tests);
    static void KeepNewest(Tests& tests, std::vector<StartedTest>& same);
    void Finish(LinkKind kind, const std::string& address, const CLinkInfo* info);

    const operands::ValueServices& m_services;
    const std::shared_ptr<platform::PostedWork> m_inbox;  // of what the workers hand over
    Tests m_links[static_cast<std::size_t>(LinkKind::Count)];
};

}  // namespace kalvex::host
