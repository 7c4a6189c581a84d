#include "vantrel/network/TlsContent.h"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>

#include <memory>

#include "platform/Files.h"

namespace kalvex::vantrel {

namespace {

template <auto Free>
struct Freeing {
    template <class Thing>
    void operator()(Thing* thing) const {
        Free(thing);
    }
};
using Memory = std::unique_ptr<BIO, Freeing<BIO_free>>;
using Certificate = std::unique_ptr<X509, Freeing<X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, Freeing<EVP_PKEY_free>>;
using Context = std::unique_ptr<SSL_CTX, Freeing<SSL_CTX_free>>;

Memory MemoryOf(const std::string& text) {
    return Memory(::BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

}  // namespace

bool CanBeShown(const TlsContent& content) {
    const Memory certificates = MemoryOf(content.certificate);
    const Certificate certificate(
        ::PEM_read_bio_X509_AUX(certificates.get(), nullptr, nullptr, nullptr));
    const Key key(
        ::PEM_read_bio_PrivateKey(MemoryOf(content.key).get(), nullptr, nullptr, nullptr));
    const Context context(::SSL_CTX_new(::TLS_server_method()));
    return certificate && key && context &&
           ::SSL_CTX_use_certificate(context.get(), certificate.get()) == 1 &&
           ::SSL_CTX_use_PrivateKey(context.get(), key.get()) == 1 &&
           ::SSL_CTX_check_private_key(context.get()) == 1;
}

bool ReadTlsFiles(const TlsFiles& files, TlsContent& content, platform::Notice& error) {
    const struct {
        const std::string& path;
        std::string& content;
    } rows[] = {{files.authority, content.authority},
                {files.certificate, content.certificate},
                {files.key, content.key}};
    if (const platform::Notice open = platform::DescribeOpenSecret(files.key)) {
        error = open;
        return false;
    }
    for (const auto& row : rows) {
        std::string why;
        if (row.path.empty() || platform::ReadWholeFile(row.path, row.content, why)) continue;
        error = {platform::Translatable("Brak dostępu do pliku %s (%s)"), {row.path, why}};
        return false;
    }
    return true;
}

}  // namespace kalvex::vantrel
