#include "platform/CurlFtpSession.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <sys/socket.h>

#include <cctype>
#include <cerrno>
#include <optional>

#include "platform/posix/Resolve.h"
#include "platform/posix/SharedLibrary.h"

namespace kalvex::platform {

namespace {

constexpr long kTryLimitSeconds = 30;
constexpr std::size_t kCodeLength = 3;

// The functions of the library that are used here.
#define KALVEX_CURL_FUNCTIONS(X) \
    X(global_init)               \
    X(global_cleanup)            \
    X(easy_init)                 \
    X(easy_setopt)               \
    X(easy_perform)              \
    X(easy_getinfo)              \
    X(easy_strerror)             \
    X(easy_cleanup)              \
    X(slist_append)              \
    X(slist_free_all)

struct CurlLibrary {
    SharedLibrary curl{"libcurl.so.4"};
#define KALVEX_ROW(name) \
    decltype(&curl_##name) name = curl.Find<decltype(&curl_##name)>("curl_" #name);
    KALVEX_CURL_FUNCTIONS(KALVEX_ROW)
#undef KALVEX_ROW
};

const CurlLibrary& Curl() {
    static const CurlLibrary functions;
    return functions;
}

struct EasyDeleter {
    void operator()(CURL* handle) const { Curl().easy_cleanup(handle); }
};

struct ListDeleter {
    void operator()(curl_slist* list) const { Curl().slist_free_all(list); }
};

// "220 text" ends an answer; "220-text" and anything else goes on with it.
bool EndsAnswer(std::string_view line) {
    if (line.size() <= kCodeLength || line[kCodeLength] != ' ') return false;
    for (const char digit : line.substr(0, kCodeLength)) {
        if (std::isdigit(static_cast<unsigned char>(digit)) == 0) return false;
    }
    return true;
}

class CurlFtpSession final : public FtpSession {
  public:
    explicit CurlFtpSession(CURL* handle) : m_handle(handle) {
        Set(CURLOPT_NOSIGNAL, 1L);
        Set(CURLOPT_PROTOCOLS_STR, "ftp");
        Set(CURLOPT_PROXY, "");
        Set(CURLOPT_NOBODY, 1L);
        Set(CURLOPT_FTP_FILEMETHOD, static_cast<long>(CURLFTPMETHOD_NOCWD));
        Set(CURLOPT_TIMEOUT, kTryLimitSeconds);
        Set(CURLOPT_ERRORBUFFER, static_cast<char*>(m_error));
        Set(CURLOPT_HEADERDATA, static_cast<void*>(this));
        Set(CURLOPT_HEADERFUNCTION, &CurlFtpSession::OnLine);
    }

    // The name is looked up here, so that whatever stands in it cannot be taken for another part of
    // a URL.
    bool Connect(const FtpLogin& login, std::string& error) override {
        m_greeting.clear();
        m_greeted = false;
        const std::optional<sockaddr_in> host = ResolveHost(login.address, error);
        if (!host) return false;
        char number[INET_ADDRSTRLEN] = {};
        inet_ntop(AF_INET, &host->sin_addr, number, sizeof number);
        const std::string url =
            std::string("ftp://") + number + ':' + std::to_string(login.port) + '/';
        Set(CURLOPT_URL, url.c_str());
        Set(CURLOPT_USERNAME, login.user.c_str());
        Set(CURLOPT_PASSWORD, login.password.c_str());
        m_error[0] = '\0';
        const CURLcode code = Curl().easy_perform(m_handle.get());
        if (code == CURLE_OK) return true;
        error = m_error[0] != '\0' ? m_error : Curl().easy_strerror(code);
        return false;
    }

    std::string GetGreeting() const override { return m_greeting; }

    // A star before a command tells the library that its answer does not matter.
    void Command(const std::string& command) override {
        const std::unique_ptr<curl_slist, ListDeleter> list(
            Curl().slist_append(nullptr, ('*' + command).c_str()));
        Set(CURLOPT_QUOTE, list.get());
        Curl().easy_perform(m_handle.get());
        Set(CURLOPT_QUOTE, static_cast<curl_slist*>(nullptr));
    }

    bool Close() override {
        curl_socket_t fd = CURL_SOCKET_BAD;
        Curl().easy_getinfo(m_handle.get(), CURLINFO_ACTIVESOCKET, &fd);
        if (fd == CURL_SOCKET_BAD) return false;
        char byte = 0;
        const ssize_t count = recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
        const bool open = count > 0 || (count < 0 && errno == EAGAIN);
        m_handle.reset();
        return open;
    }

  private:
    template <class Value>
    void Set(CURLoption option, Value value) {
        Curl().easy_setopt(m_handle.get(), option, value);
    }

    static std::size_t OnLine(char* text, std::size_t size, std::size_t count, void* self) {
        static_cast<CurlFtpSession*>(self)->TakeLine({text, size * count});
        return size * count;
    }

    void TakeLine(std::string_view line) {
        if (m_greeted) return;
        m_greeting += line;
        m_greeted = EndsAnswer(line);
    }

    std::unique_ptr<CURL, EasyDeleter> m_handle;
    char m_error[CURL_ERROR_SIZE] = {};
    std::string m_greeting;
    bool m_greeted = false;
};

}  // namespace

bool StartFtp() {
    return Curl().curl.IsComplete() && Curl().global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
}

void StopFtp() {
    Curl().global_cleanup();
}

std::unique_ptr<FtpSession> MakeFtpSession() {
    CURL* handle = Curl().easy_init();
    if (handle == nullptr) return nullptr;
    return std::make_unique<CurlFtpSession>(handle);
}

}  // namespace kalvex::platform
