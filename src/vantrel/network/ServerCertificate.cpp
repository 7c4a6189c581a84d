#include "vantrel/network/ServerCertificate.h"

#include <sys/stat.h>

#include <utility>

namespace kalvex::vantrel {

namespace {

constexpr std::int64_t kPatience = 10'000;  // milliseconds, for files that are being replaced

constexpr const char* kCannotBeShown =
    platform::Translatable("Nie można nasłuchiwać %s (niepoprawny certyfikat albo klucz)");
constexpr const char* kReadAnew = platform::Translatable("Certyfikat odczytany ponownie: %s");
constexpr const char* kUnchanged = platform::Translatable("Certyfikat bez zmian: %s");

// The library offers credentials that are fetched anew in its C interface alone.
class FetchedCredentials final : public grpc::ServerCredentials {
  public:
    explicit FetchedCredentials(grpc_server_credentials* credentials)
        : m_credentials(credentials) {}
    ~FetchedCredentials() override { ::grpc_server_credentials_release(m_credentials); }
    FetchedCredentials(const FetchedCredentials&) = delete;
    FetchedCredentials& operator=(const FetchedCredentials&) = delete;

    void SetAuthMetadataProcessor(
        const std::shared_ptr<grpc::AuthMetadataProcessor>& /*processor*/) override {}

  private:
    int AddPortToServer(const std::string& address, grpc_server* server) override {
        return ::grpc_server_add_http2_port(server, address.c_str(), m_credentials);
    }

    grpc_server_credentials* const m_credentials;
};

}  // namespace

bool ServerCertificate::Open(platform::Notice& error) {
    m_read = StampsOfFiles();
    const std::lock_guard lock(m_mutex);
    m_isNew = Read(m_content, error);
    return m_isNew;
}

std::shared_ptr<grpc::ServerCredentials> ServerCertificate::Credentials() {
    grpc_ssl_server_credentials_options* const options =
        ::grpc_ssl_server_credentials_create_options_using_config_fetcher(
            m_files.authority.empty() ? GRPC_SSL_DONT_REQUEST_CLIENT_CERTIFICATE
                                      : GRPC_SSL_REQUEST_AND_REQUIRE_CLIENT_CERTIFICATE_AND_VERIFY,
            Fetch, this);
    return std::make_shared<FetchedCredentials>(
        ::grpc_ssl_server_credentials_create_with_options(options));
}

std::vector<platform::Notice> ServerCertificate::Check(std::int64_t now) {
    const Stamps stamps = StampsOfFiles();
    if (stamps == m_read) {
        m_refused = stamps;
        return {};
    }
    if (stamps == m_refused && m_isTold) return {};
    TlsContent content;
    platform::Notice error;
    if (Read(content, error) && stamps == StampsOfFiles()) {
        m_read = stamps;
        const std::lock_guard lock(m_mutex);
        m_content = std::move(content);
        m_isNew = true;
        return {{kReadAnew, {m_files.certificate}}};
    }
    if (stamps != m_refused) {
        m_refused = stamps;
        m_since = now;
        m_isTold = false;
    }
    if (!error || now - m_since < kPatience) return {};
    m_isTold = true;
    return {{kUnchanged, {m_files.certificate}}, error};
}

ServerCertificate::Stamp ServerCertificate::StampOf(const std::string& path) {
    struct stat info = {};
    if (path.empty() || ::stat(path.c_str(), &info) != 0) return {};
    return {info.st_dev, info.st_ino, info.st_size, info.st_ctim.tv_sec, info.st_ctim.tv_nsec};
}

ServerCertificate::Stamps ServerCertificate::StampsOfFiles() const {
    return {StampOf(m_files.authority), StampOf(m_files.certificate), StampOf(m_files.key)};
}

bool ServerCertificate::Read(TlsContent& content, platform::Notice& error) const {
    if (!ReadTlsFiles(m_files, content, error)) return false;
    if (CanBeShown(content)) return true;
    error = {kCannotBeShown, {m_address}};
    return false;
}

grpc_ssl_certificate_config_reload_status ServerCertificate::Fetch(
    void* self, grpc_ssl_server_certificate_config** to) {
    auto& own = *static_cast<ServerCertificate*>(self);
    const std::lock_guard lock(own.m_mutex);
    if (!std::exchange(own.m_isNew, false)) {
        return GRPC_SSL_CERTIFICATE_CONFIG_RELOAD_UNCHANGED;
    }
    const TlsContent& content = own.m_content;
    const grpc_ssl_pem_key_cert_pair pair = {content.key.c_str(), content.certificate.c_str()};
    // The library wants an authority also where no client is asked for a certificate.
    const std::string& authority =
        content.authority.empty() ? content.certificate : content.authority;
    *to = ::grpc_ssl_server_certificate_config_create(authority.c_str(), &pair, 1);
    return GRPC_SSL_CERTIFICATE_CONFIG_RELOAD_NEW;
}

}  // namespace kalvex::vantrel
