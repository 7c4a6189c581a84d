// Certificates for the tests of TLS, made anew by each of them with the openssl command.
#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "support/scratch_folder.h"
#include "vantrel/network/Endpoint.h"

namespace kalvex::vantrel {

class Certificates {
  public:
    // An authority of this name, its file NAME.pem.
    void MakeAuthority(const std::string& name) const {
        Run("req -x509 " + kNewKey + " -keyout " + Key(name) + " -out " + File(name) +
            " -days 2 -subj /CN=" + name);
    }

    // A certificate for "localhost" and 127.0.0.1, signed by the authority.
    void Make(const std::string& name, const std::string& authority) const {
        m_folder.Put("names", "subjectAltName=DNS:localhost,IP:127.0.0.1,IP:10.99.0.1\n");
        Run("req " + kNewKey + " -keyout " + Key(name) + " -out " + m_folder.Path("request") +
            " -subj /CN=" + name);
        Run("x509 -req -in " + m_folder.Path("request") + " -CA " + File(authority) + " -CAkey " +
            Key(authority) + " -CAcreateserial -days 2 -extfile " + m_folder.Path("names") +
            " -out " + File(name));
    }

    // Paths for a side that shows `name`, empty for none, and trusts the authority.
    TlsFiles Files(const std::string& authority, const std::string& name = {}) const {
        TlsFiles files;
        if (!authority.empty()) files.authority = File(authority);
        if (!name.empty()) files.certificate = File(name);
        if (!name.empty()) files.key = Key(name);
        return files;
    }

    std::string File(const std::string& name) const { return m_folder.Path(name + ".pem"); }
    std::string Key(const std::string& name) const { return m_folder.Path(name + ".key"); }

  private:
    inline static const std::string kNewKey =
        "-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes";

    void Run(const std::string& command) const {
        const std::string log = m_folder.Path("openssl.log");
        if (std::system(("openssl " + command + " >" + log + " 2>&1").c_str()) == 0) return;
        throw std::runtime_error("openssl " + command + "\n" + m_folder.Get("openssl.log"));
    }

    support::ScratchFolder m_folder;
};

}  // namespace kalvex::vantrel
