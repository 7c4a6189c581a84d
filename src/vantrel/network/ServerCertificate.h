// What a server shows to clients over TLS, and read anew when its files change: whoever is
// connected stays so, and the next one sees what is new.
#pragma once

#include <grpc/grpc_security.h>
#include <grpcpp/security/server_credentials.h>

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/Translator.h"
#include "vantrel/network/Endpoint.h"
#include "vantrel/network/TlsContent.h"

namespace kalvex::vantrel {

// Main thread, but for the library's. It outlives the server that has its credentials, which is
// one.
class ServerCertificate {
  public:
    // The address is for people.
    ServerCertificate(TlsFiles files, std::string address)
        : m_files(std::move(files)), m_address(std::move(address)) {}
    ServerCertificate(const ServerCertificate&) = delete;
    ServerCertificate& operator=(const ServerCertificate&) = delete;

    // False with the reason in `error`.
    bool Open(platform::Notice& error);
    std::shared_ptr<grpc::ServerCredentials> Credentials();

    // About once a second: looks whether files have changed. What cannot be shown leaves all as it
    // was; it is told when it stays so for some seconds, since files are seldom replaced at once.
    std::vector<platform::Notice> Check(std::int64_t now);

  private:
    struct Stamp {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t size = -1;
        std::int64_t seconds = 0;
        std::int64_t nanoseconds = 0;
        bool operator==(const Stamp&) const = default;
    };
    using Stamps = std::array<Stamp, 3>;

    static Stamp StampOf(const std::string& path);
    Stamps StampsOfFiles() const;
    bool Read(TlsContent& content, platform::Notice& error) const;
    static grpc_ssl_certificate_config_reload_status Fetch(void* self,
                                                           grpc_ssl_server_certificate_config** to);

    const TlsFiles m_files;
    const std::string m_address;
    Stamps m_read = {};     // of what is shown
    Stamps m_refused = {};  // of what could not be shown
    std::int64_t m_since = 0;
    bool m_isTold = false;

    std::mutex m_mutex;  // of all below
    TlsContent m_content;
    bool m_isNew = false;  // the library has not fetched it
};

}  // namespace kalvex::vantrel
