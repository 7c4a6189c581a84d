#include "platform/HttpEndpoint.h"

#include <httplib.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "platform/HttpHead.h"
#include "platform/Threads.h"
#include "platform/posix/LocalListener.h"

namespace kalvex::platform {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::size_t kWorkers = 4;
constexpr milliseconds kPauseWithoutDescriptors{200};
constexpr int kServiceUnavailable = 503;

struct Refusal {
    int status;
    const char* words;
};

constexpr Refusal kRefusals[] = {
    {400, "Bad Request"},
    {414, "URI Too Long"},
    {431, "Request Header Fields Too Large"},
};

// One client, who has a limited time to ask, and the same again to take the answer. What ends the
// endpoint ends the conversation.
class ClientStream final : public httplib::Stream {
  public:
    ClientStream(int socket, int stop, milliseconds patience)
        : m_socket(socket),
          m_stopFd(stop),
          m_patience(patience),
          m_deadline(steady_clock::now() + patience) {}

    bool is_readable() const override { return m_begin < m_bytes.size() || Wait(POLLIN); }
    bool is_writable() const override { return Wait(POLLOUT); }
    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string&, int&) const override {}
    socket_t socket() const override { return m_socket; }

    ssize_t read(char* target, size_t size) override {
        if (m_begin == m_bytes.size() && !Fill()) return -1;
        const std::size_t count = m_bytes.copy(target, size, m_begin);
        m_begin += count;
        return static_cast<ssize_t>(count);
    }

    // Reads up to the content, or until the head is too long; false when that does not come.
    bool TakeHead(std::string& head) {
        std::size_t end;
        while ((end = FindHttpContent(m_bytes)) == std::string::npos) {
            if (m_bytes.size() > kLongestHttpHead) break;
            if (!Fill()) return false;
        }
        head = m_bytes.substr(0, end);
        m_begin = head.size();
        return true;
    }

    // Is read before what follows.
    void PutBack(const std::string& head) {
        m_bytes.replace(0, m_begin, head);
        m_begin = 0;
    }

    ssize_t write(const char* source, size_t size) override {
        if (!std::exchange(m_answering, true)) m_deadline = steady_clock::now() + m_patience;
        for (std::size_t sent = 0; sent < size;) {
            if (!Wait(POLLOUT)) return -1;
            const ssize_t count =
                ::send(m_socket, source + sent, size - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count < 0) return -1;
            sent += static_cast<std::size_t>(count);
        }
        return static_cast<ssize_t>(size);
    }

  private:
    bool Wait(short events) const {
        const auto left = std::chrono::ceil<milliseconds>(m_deadline - steady_clock::now()).count();
        std::array<pollfd, 2> waits{{{m_stopFd, POLLIN, 0}, {m_socket, events, 0}}};
        return left > 0 && ::poll(waits.data(), waits.size(), static_cast<int>(left)) > 0 &&
               waits[0].revents == 0;
    }

    bool Fill() {
        if (m_read >= kLongestHttpRequest || !Wait(POLLIN)) return false;
        std::array<char, 2048> buffer;
        const ssize_t count = ::recv(m_socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (count <= 0) return false;
        m_bytes.erase(0, m_begin).append(buffer.data(), static_cast<std::size_t>(count));
        m_begin = 0;
        m_read += static_cast<std::size_t>(count);
        return true;
    }

    const int m_socket;
    const int m_stopFd;
    const milliseconds m_patience;
    steady_clock::time_point m_deadline;
    bool m_answering = false;
    std::string m_bytes;      // that have come and
    std::size_t m_begin = 0;  // from here on have not been read
    std::size_t m_read = 0;   // of all that has come
};

std::string RefusalText(int status) {
    const auto row = std::ranges::find(kRefusals, status, &Refusal::status);
    return "HTTP/1.1 " + std::to_string(status) + ' ' + row->words +
           "\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
}

// The library reads requests and writes answers; sockets and threads are the endpoint's, and so are
// the bounds: the library takes the time and the stack that a header asks for.
class RequestServer final : public httplib::Server {
  public:
    void Serve(ClientStream& stream) {
        std::string head;
        if (!stream.TakeHead(head)) return;
        const HttpHead bounded = BoundHttpHead(head);
        if (bounded.refusal != 0) {
            const std::string answer = RefusalText(bounded.refusal);
            stream.write(answer.data(), answer.size());
            return;
        }
        stream.PutBack(bounded.text);
        bool closed = false;
        process_request(stream, true, closed, nullptr);
    }
};

// Making a server of the library takes SIGPIPE from the process, which is not its own.
class KeptSigpipe {
  public:
    KeptSigpipe() { ::sigaction(SIGPIPE, nullptr, &m_before); }
    ~KeptSigpipe() { ::sigaction(SIGPIPE, &m_before, nullptr); }
    KeptSigpipe(const KeptSigpipe&) = delete;
    KeptSigpipe& operator=(const KeptSigpipe&) = delete;

  private:
    struct sigaction m_before {};
};

std::unique_ptr<RequestServer> MakeServer() {
    const KeptSigpipe kept;
    return std::make_unique<RequestServer>();
}

// The text on its way from the main thread to those who wait for it. What is posted holds it too,
// and may come to its turn when the endpoint is gone.
struct TextExchange {
    std::function<std::string()> render;  // main thread; none when the endpoint has ended

    std::mutex mutex;
    std::condition_variable changed;
    bool asked = false;
    bool stopping = false;
    std::uint64_t generation = 0;
    std::string text;
};

void RenderText(TextExchange& exchange) {
    if (!exchange.render) return;
    std::string text;
    bool made = true;
    try {
        text = exchange.render();
    } catch (const std::bad_alloc&) {
        made = false;
    }
    const std::lock_guard lock(exchange.mutex);
    exchange.asked = false;
    if (!made) return;
    exchange.text = std::move(text);
    ++exchange.generation;
    exchange.changed.notify_all();
}

class LoopbackEndpoint final : public HttpEndpoint {
  public:
    LoopbackEndpoint(MainLoop& loop, HttpText text, milliseconds patience)
        : m_loop(loop),
          m_patience(patience),
          m_server(MakeServer()),
          m_stopFd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        m_exchange->render = std::move(text.render);
        m_server->set_payload_max_length(kLongestHttpRequest);
        m_server->Get(text.path, [this, type = std::move(text.contentType)](
                                     const httplib::Request&, httplib::Response& response) {
            Answer(type, response);
        });
    }

    ~LoopbackEndpoint() override {
        m_exchange->render = nullptr;
        {
            const std::lock_guard lock(m_exchange->mutex);
            m_exchange->stopping = true;
            m_exchange->changed.notify_all();
        }
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = ::write(m_stopFd.Get(), &one, sizeof one);
        for (std::thread& worker : m_workers) worker.join();
    }

    bool Start(const std::string& address, std::string& error) override {
        if (!m_listener.Listen(address, error)) return false;
        for (std::size_t i = 0; i < kWorkers; ++i) {
            std::thread worker = StartThread({"HttpEndpoint", 0}, [this] { Work(); });
            if (worker.joinable()) m_workers.push_back(std::move(worker));
        }
        if (m_workers.empty()) error = std::strerror(EAGAIN);
        return !m_workers.empty();
    }

    const std::string& GetAddress() const override { return m_listener.GetAddress(); }

  private:
    // Waits for a client; false at the end of the endpoint.
    bool WaitForClient() const {
        std::array<pollfd, 2> waits{{{m_stopFd.Get(), POLLIN, 0}, {m_listener.Get(), POLLIN, 0}}};
        ::poll(waits.data(), waits.size(), -1);
        return waits[0].revents == 0;
    }

    void Work() {
        while (WaitForClient()) {
            const Descriptor client(::accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (client.Get() >= 0) {
                Serve(client.Get());
            } else if (errno == EMFILE || errno == ENFILE) {
                pollfd stop{m_stopFd.Get(), POLLIN, 0};
                ::poll(&stop, 1, static_cast<int>(kPauseWithoutDescriptors.count()));
            }
        }
    }

    // Without memory the client gets no answer.
    void Serve(int client) {
        try {
            ClientStream stream(client, m_stopFd.Get(), m_patience);
            m_server->Serve(stream);
        } catch (const std::bad_alloc&) {
        }
    }

    void Answer(const std::string& contentType, httplib::Response& response) {
        std::string text;
        if (AskForText(text)) {
            response.set_content(text, contentType);
            return;
        }
        response.status = kServiceUnavailable;
        response.set_content("The main loop does not answer.\n", "text/plain; charset=utf-8");
    }

    bool AskForText(std::string& text) {
        TextExchange& exchange = *m_exchange;
        std::unique_lock lock(exchange.mutex);
        const std::uint64_t before = exchange.generation;
        if (!exchange.asked) {
            exchange.asked = true;
            m_loop.Post([held = m_exchange] { RenderText(*held); });
        }
        const auto arrived = [&] { return exchange.generation != before; };
        exchange.changed.wait_for(lock, m_patience, [&] { return arrived() || exchange.stopping; });
        if (!arrived()) return false;
        text = exchange.text;
        return true;
    }

    MainLoop& m_loop;
    const milliseconds m_patience;
    const std::shared_ptr<TextExchange> m_exchange = std::make_shared<TextExchange>();
    const std::unique_ptr<RequestServer> m_server;
    const Descriptor m_stopFd;
    LocalListener m_listener;
    std::vector<std::thread> m_workers;
};

}  // namespace

std::unique_ptr<HttpEndpoint> MakeHttpEndpoint(MainLoop& loop, HttpText text,
                                               milliseconds patience) {
    return std::make_unique<LoopbackEndpoint>(loop, std::move(text), patience);
}

}  // namespace kalvex::platform
