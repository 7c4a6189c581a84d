#include "platform/Secret.h"

#include <sodium.h>

#include <algorithm>

namespace kalvex::platform {

void WipeMemory(void* bytes, std::size_t size) {
    sodium_memzero(bytes, size);
}

Secret::Secret(std::string_view text) : m_size(text.size()) {
    if (text.empty()) return;
    if (sodium_init() >= 0) m_bytes = static_cast<char*>(sodium_malloc(m_size));
    m_guarded = m_bytes != nullptr;
    if (!m_guarded) m_bytes = new char[m_size];
    std::ranges::copy(text, m_bytes);
}

Secret::Secret(std::string&& text) : Secret(std::string_view(text)) {
    WipeMemory(text.data(), text.size());
    text.clear();
}

Secret::~Secret() {
    if (m_guarded) {
        sodium_free(m_bytes);
    } else if (m_bytes != nullptr) {
        WipeMemory(m_bytes, m_size);
        delete[] m_bytes;
    }
}

}  // namespace kalvex::platform
