#include "platform/Crypt.h"

#include <sodium.h>

#include <algorithm>

#include "platform/FileEdit.h"
#include "platform/Files.h"

namespace kalvex::platform {

namespace {

constexpr std::string_view kHeader = "{kx1}";
constexpr int kAlphabet = sodium_base64_VARIANT_ORIGINAL_NO_PADDING;
constexpr std::size_t kOverhead = crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES;

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* Bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

std::string ToBase64(std::string_view bytes) {
    std::string text(sodium_base64_encoded_len(bytes.size(), kAlphabet), '\0');
    sodium_bin2base64(text.data(), text.size(), Bytes(bytes), bytes.size(), kAlphabet);
    text.pop_back();  // the terminator
    return text;
}

std::optional<std::string> FromBase64(std::string_view text) {
    std::string bytes(text.size(), '\0');
    std::size_t length = 0;
    if (sodium_base642bin(Bytes(bytes), bytes.size(), text.data(), text.size(), nullptr, &length,
                          nullptr, kAlphabet) != 0) {
        return std::nullopt;
    }
    bytes.resize(length);
    return bytes;
}

// What the protected text holds; nothing for one that has not its form.
std::optional<std::string> SealedBytes(std::string_view text) {
    if (!CCrypt::GetCryptHeader(text)) return std::nullopt;
    std::optional<std::string> bytes = FromBase64(text.substr(kHeader.size()));
    if (bytes && bytes->size() < kOverhead) bytes.reset();
    return bytes;
}

template <class Key>
bool ReadKeyFile(const std::string& path, Key& key) {
    std::string content;
    std::string error;
    if (DescribeOpenSecret(path) || !ReadWholeFile(path, content, error) ||
        content.size() != key.size()) {
        return false;
    }
    std::ranges::copy(content, key.begin());
    CCrypt::SecureEmptyString(content);
    return true;
}

// Leaves alone what is there.
template <class Key>
void MakeKeyFile(const std::string& path, const Key& key) {
    const auto fill = [&key](std::string& content) {
        if (!content.empty()) return false;
        content.assign(key.begin(), key.end());
        return true;
    };
    std::string error;
    Notice fault;
    if (MakePrivateFile(path, error)) EditWholeFile(path, fill, fault);
}

}  // namespace

CCrypt::~CCrypt() {
    sodium_memzero(m_key.data(), m_key.size());
}

const CCrypt::Key& CCrypt::GetKey(bool make) const {
    static_assert(std::tuple_size_v<Key> == crypto_secretbox_KEYBYTES);
    std::call_once(m_onceKey, [this, make] {
        [[maybe_unused]] const int ready = sodium_init();
        m_lasting = ReadKeyFile(m_keyFile, m_key);
        if (m_lasting) return;
        randombytes_buf(m_key.data(), m_key.size());
        if (!make || m_use != KeyFile::MadeAtFirstUse) return;
        MakeKeyFile(m_keyFile, m_key);
        m_lasting = ReadKeyFile(m_keyFile, m_key);
    });
    return m_key;
}

CCrypt::Key CCrypt::LabelKey(std::string_view label, bool make) const {
    const Key& key = GetKey(make);
    Key derived;
    crypto_generichash(derived.data(), derived.size(), Bytes(label), label.size(), key.data(),
                       key.size());
    return derived;
}

std::string CCrypt::Seal(std::string_view label, std::string_view text) const {
    Key key = LabelKey(label, true);
    std::string sealed(kOverhead + text.size(), '\0');
    randombytes_buf(sealed.data(), crypto_secretbox_NONCEBYTES);
    crypto_secretbox_easy(Bytes(sealed) + crypto_secretbox_NONCEBYTES, Bytes(text), text.size(),
                          Bytes(sealed), key.data());
    sodium_memzero(key.data(), key.size());
    return std::string(kHeader) + ToBase64(sealed);
}

bool CCrypt::GetCryptHeader(std::string_view text) {
    return text.starts_with(kHeader);
}

std::optional<std::string> CCrypt::DecryptTextWithLabel(std::string_view label,
                                                        std::string_view text) const {
    const std::optional<std::string> sealed = SealedBytes(text);
    if (!sealed) return std::nullopt;
    Key key = LabelKey(label, false);
    std::string plain(sealed->size() - kOverhead, '\0');
    const int opened = crypto_secretbox_open_easy(
        Bytes(plain), Bytes(*sealed) + crypto_secretbox_NONCEBYTES,
        sealed->size() - crypto_secretbox_NONCEBYTES, Bytes(*sealed), key.data());
    sodium_memzero(key.data(), key.size());
    if (opened != 0) return std::nullopt;
    return plain;
}

std::optional<std::string> CCrypt::EncryptTextWithLabel(std::string_view label,
                                                        std::string_view text) const {
    std::string sealed = Seal(label, text);
    if (!m_lasting) return std::nullopt;
    return sealed;
}

bool CCrypt::CanDecryptText(std::string_view text) const {
    std::optional<std::string> plain = DecryptTextWithLabel({}, text);
    if (!plain) return false;
    SecureEmptyString(*plain);
    return true;
}

std::string CCrypt::DecryptText(std::string_view text) const {
    return DecryptTextWithLabel({}, text).value_or(std::string());
}

std::string CCrypt::EncryptText(std::string_view text) const {
    return Seal({}, text);
}

void CCrypt::SecureEmptyString(std::string& text) {
    sodium_memzero(text.data(), text.size());
    text.clear();
}

}  // namespace kalvex::platform
