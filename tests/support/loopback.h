// Servers on the loopback interface, for the tests that talk to one.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kalvex::support {

// A port of this machine that a test holds: it refuses connections unless it listens.
class LoopbackPort {
  public:
    explicit LoopbackPort(bool listens) : m_fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* plain = reinterpret_cast<sockaddr*>(&address);
        if (bind(m_fd, plain, length) != 0 || (listens && listen(m_fd, 8) != 0) ||
            getsockname(m_fd, plain, &length) != 0) {
            throw std::runtime_error("no port on the loopback interface");
        }
        m_number = ntohs(address.sin_port);
    }
    ~LoopbackPort() { close(m_fd); }
    LoopbackPort(const LoopbackPort&) = delete;
    LoopbackPort& operator=(const LoopbackPort&) = delete;

    int Descriptor() const { return m_fd; }
    std::uint16_t Number() const { return m_number; }

  private:
    int m_fd;
    std::uint16_t m_number = 0;
};

// Speaks as much FTP as a login needs. It answers by the first word of a command, and 200 to what
// has no answer of its own; "hangup" as an answer ends the conversation without a word.
class FtpResponder {
  public:
    using Answers = std::map<std::string, std::string>;

    explicit FtpResponder(const Answers& answers = {}) {
        m_answers = {{"greeting", "220 Serwer"},
                     {"USER", "331 Hasło?"},
                     {"PASS", "230 Witamy"},
                     {"PWD", "257 \"/\""},
                     {"QUIT", "221 Do widzenia"}};
        for (const auto& [word, answer] : answers) m_answers[word] = answer;
        m_thread = std::thread([this] { Serve(); });
    }
    ~FtpResponder() {
        {
            const std::lock_guard lock(m_mutex);
            m_ends = true;
            shutdown(m_port.Descriptor(), SHUT_RDWR);
            if (m_client >= 0) shutdown(m_client, SHUT_RDWR);
        }
        m_thread.join();
    }
    FtpResponder(const FtpResponder&) = delete;
    FtpResponder& operator=(const FtpResponder&) = delete;

    std::uint16_t Port() const { return m_port.Number(); }

    // Everything that clients have said; a greeting counts as "connect".
    std::vector<std::string> Commands() {
        const std::lock_guard lock(m_mutex);
        return m_commands;
    }

  private:
    void Serve() {
        for (;;) {
            const int client = accept(m_port.Descriptor(), nullptr, nullptr);
            if (client < 0) return;
            const bool goesOn = Attend(client);
            if (goesOn) {
                Note("connect");
                Converse(client);
                Attend(-1);
            }
            close(client);
            if (!goesOn) return;
        }
    }

    // Says whom the end of the responder must cut off; false when it has come already.
    bool Attend(int client) {
        const std::lock_guard lock(m_mutex);
        m_client = client;
        return !m_ends;
    }

    void Converse(int client) {
        std::string line;
        bool goesOn = Answer(client, "greeting");
        char c = 0;
        while (goesOn && recv(client, &c, 1, 0) == 1) {
            if (c != '\n') {
                line += c;
                continue;
            }
            while (line.ends_with('\r')) line.pop_back();
            Note(line);
            goesOn = Answer(client, line.substr(0, line.find(' ')));
            if (line == "QUIT") return;
            line.clear();
        }
    }

    bool Answer(int client, const std::string& word) {
        const auto found = m_answers.find(word);
        std::string answer = found == m_answers.end() ? "200 Dobrze" : found->second;
        if (answer == "hangup") return false;
        answer += "\r\n";
        return send(client, answer.data(), answer.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(answer.size());
    }

    void Note(const std::string& command) {
        const std::lock_guard lock(m_mutex);
        m_commands.push_back(command);
    }

    LoopbackPort m_port{true};
    Answers m_answers;
    std::mutex m_mutex;
    int m_client = -1;
    bool m_ends = false;
    std::vector<std::string> m_commands;
    std::thread m_thread;
};

}  // namespace kalvex::support
