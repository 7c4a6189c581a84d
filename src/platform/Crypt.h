// Texts that are not to be read by whoever sees them: the passwords of sources in memory and in the
// profile, and those of FTP servers in scripts. Any thread.
//
// A protected text is a header and a cipher under a secret key, which lies in a file of its own
// that only its owner can read; one that others can read as well is not used. Whoever has the file
// can read the texts; without it they are lost.
#pragma once

#include <array>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace kalvex::platform {

enum class KeyFile { ReadOnly, MadeAtFirstUse };

class CCrypt {
  public:
    // The key is read when it is first needed, and made if that is to protect a text: one that is
    // missing where a text is to be opened cannot be made again. Where it cannot be had, texts are
    // protected by a key that ends with the process.
    CCrypt(std::string keyFile, KeyFile use) : m_keyFile(std::move(keyFile)), m_use(use) {}
    ~CCrypt();
    CCrypt(const CCrypt&) = delete;
    CCrypt& operator=(const CCrypt&) = delete;

    const std::string& GetKeyFile() const { return m_keyFile; }

    // Whether the text looks like a protected one.
    static bool GetCryptHeader(std::string_view text);

    // Whether the text was protected by EncryptText under this key.
    bool CanDecryptText(std::string_view text) const;
    // Empty for a text that cannot be decrypted.
    std::string DecryptText(std::string_view text) const;
    std::string EncryptText(std::string_view text) const;

    // What is protected under one label cannot be read under another. Nothing when the text is not
    // to be decrypted; nothing when the key would not last.
    std::optional<std::string> DecryptTextWithLabel(std::string_view label,
                                                    std::string_view text) const;
    std::optional<std::string> EncryptTextWithLabel(std::string_view label,
                                                    std::string_view text) const;

    // Overwrites the text, then empties it.
    static void SecureEmptyString(std::string& text);

  private:
    using Key = std::array<unsigned char, 32>;

    const Key& GetKey(bool make) const;
    Key LabelKey(std::string_view label, bool make) const;
    std::string Seal(std::string_view label, std::string_view text) const;

    const std::string m_keyFile;
    const KeyFile m_use;
    mutable std::once_flag m_onceKey;
    mutable Key m_key{};
    mutable bool m_lasting = false;
};

}  // namespace kalvex::platform
