// What somebody says to the endpoint of figures: its head as it is bounded for the library, and the
// library's answer over a socket.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <thread>

#include "fuzz/fuzz.h"
#include "platform/HttpEndpoint.h"
#include "platform/HttpHead.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"

namespace kalvex::fuzz {

namespace {

constexpr const char* kTexts[] = {
    "",
    "GET /metrics HTTP/1.1\r\nHost: x\r\n\r\n",
    "GET /metrics?a=%41&b=+c HTTP/1.0\r\nRange: bytes=0-1,2-3\r\nAccept-Encoding: gzip, br\r\n\r\n",
    "POST /metrics HTTP/1.1\r\nContent-Length: 2\r\nContent-Type: multipart/form-data; "
    "boundary=x\r\n\r\nab",
    "PUT / HTTP/1.1\r\nContent-Length: 99999999999999999999\r\nTransfer-Encoding: chunked\r\n\r\n",
    "HEAD /metrics HTTP/1.1\r\nExpect: 100-continue\r\nConnection: upgrade\r\n\r\n",
    "OPTIONS * HTTP/1.1\r\nContent-Length: -1\r\n\r\n",
    "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n",
    "GET http://x/%2e%2e/%u0142 HTTP/1.1\r\nA\r\n\r\n",
};

constexpr const char* kLast = "\r\n\r\n";

// The endpoint with the main loop that it asks.
class World {
  public:
    World() : m_endpoint(MakeHttpEndpoint(m_loop, {"/metrics", "text/plain", [] { return "x"; }})) {
        std::string error;
        Demand(m_endpoint->Start(m_folder.Path("s"), error), "the endpoint must start");
    }
    ~World() {
        m_loop.Post([this] { m_over = true; });
        m_main.join();
    }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    std::string Ask(std::string_view request) const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        m_endpoint->GetAddress().copy(address.sun_path, sizeof address.sun_path - 1);
        const int client = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        Demand(::connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0,
               "the endpoint must be there");
        ::send(client, request.data(), request.size(), MSG_NOSIGNAL);
        ::shutdown(client, SHUT_WR);
        std::string answer;
        char buffer[4096];
        for (ssize_t count; (count = ::recv(client, buffer, sizeof buffer, 0)) > 0;)
            answer.append(buffer, static_cast<std::size_t>(count));
        ::close(client);
        return answer;
    }

  private:
    support::ScratchFolder m_folder;
    support::WaitingLoop m_loop;
    bool m_over = false;  // of the loop's thread
    std::unique_ptr<platform::HttpEndpoint> m_endpoint;
    std::thread m_main{[this] {
        while (!m_over) m_loop.WaitAndRun();
    }};
};

void CheckHead(std::string_view request) {
    const std::size_t content = platform::FindHttpContent(request);
    const platform::HttpHead head = platform::BoundHttpHead(request.substr(0, content));
    if (head.refusal != 0) return;
    Demand(head.text.size() <= platform::kLongestHttpHead, "a head is bounded");
    Demand(head.text.ends_with(kLast), "a head ends");
    const std::string_view headers = std::string_view(head.text).substr(head.text.find('\n') + 1);
    for (std::string_view rest = headers; rest != "\r\n";) {
        Demand((rest[0] | ' ') == 'c', "only the length of the content counts");
        rest.remove_prefix(rest.find('\n') + 1);
    }
}

}  // namespace

std::vector<std::string> FuzzCorpus() {
    std::vector<std::string> corpus(std::begin(kTexts), std::end(kTexts));
    corpus.push_back("GET /metrics HTTP/1.1\r\nRange: bytes=" + std::string(8000, '1') + kLast);
    corpus.push_back("GET /" + std::string(1100, 'a') + " HTTP/1.1" + kLast);
    return corpus;
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const kalvex::fuzz::World world;
    const std::string_view request = kalvex::fuzz::Bytes(data, size);
    kalvex::fuzz::CheckHead(request);
    const std::string answer = world.Ask(request);
    kalvex::fuzz::Demand(answer.empty() || answer.starts_with("HTTP/1."), "an answer is one");
    return 0;
}
