// Modules with a script, and data servers in processes of their own, for the benchmarks of what
// goes on between them. Each benchmark checks what arrived; its program fails when something is
// wrong.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "engine/Tick.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "platform/Questions.h"
#include "sources/ClientInterface.h"
#include "support/fixed_user.h"
#include "support/log_recorder.h"
#include "vantrel/network/NetworkClient.h"

namespace kalvex::bench {

// Tells what is wrong, for EndBench.
void Expect(bool right, const std::string& what);

// Of the program; it holds the servers' sockets and data.
const std::string& Folder();

// What a process holds, in KB.
long Memory(pid_t process);

// To be called before anything else, and the servers be started before the first thread: makes the
// folder and reads the arguments. The answer of EndBench is the exit status.
void BeginBench(int argc, char** argv);
int EndBench();

// A server in a process of its own.
class Child {
  public:
    explicit Child(const std::function<int()>& serve);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t Process() const { return m_process; }

  private:
    pid_t m_process;
};

// The data server itself, with this behind its section [server] and the name "stacja".
int ServePlant(const std::string& configuration);

// The network of a process, which gives it time for its periodic work while it waits.
class Network {
  public:
    vantrel::TransportFactory& Transports() { return m_client; }
    void Deliver();
    // Ends the program when it takes more than a minute.
    void DeliverUntil(const std::function<bool()>& done);

  private:
    platform::PostedWork m_loop;
    support::SilentLog m_log;
    platform::Translator m_translator;
    std::int64_t m_nextCheck = 0;
    vantrel::NetworkClient m_client{{}, m_loop, m_log, m_translator};
};

// A module with one script.
class Module {
  public:
    explicit Module(const std::string& text);

    void Tick();
    void RunToEnd();
    void WaitForData(std::string_view source);

    void Subscribe() { m_client.UnblockSubscribe(true); }

    Network& GetNetwork() { return m_network; }
    bool Has(const std::string& name) { return m_document.Variables().Find(name) != nullptr; }
    operands::CVariable& Variable(const std::string& name) {
        return *m_document.Variables().Find(name);
    }
    double Value(const std::string& name);

  private:
    platform::VirtualClock m_clock{1710050400};
    support::SilentLog m_log;
    platform::Translator m_translator;
    support::FixedUser m_users;
    platform::Paths m_paths{Folder()};
    platform::NoAnswers m_questions;
    Network m_network;
    sources::CClientInterface m_client{{m_log, m_translator, m_users, m_network.Transports()}};
    engine::DocumentServices m_services{
        {m_clock, m_log, m_translator, m_users, m_paths, language::Functions()},
        language::Statements(),
        m_questions,
        &m_client};
    engine::CKalvexDoc m_document{m_services};
    engine::TickRunner m_ticker;
};

}  // namespace kalvex::bench
