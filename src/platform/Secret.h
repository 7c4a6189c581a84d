// A text that is to leave no trace in memory: it lies in one place, between pages that nobody may
// touch, is not swapped out, and is overwritten at its end. Where the system has no such pages left
// it lies in the heap.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace kalvex::platform {

// Overwrites what is not needed any more.
void WipeMemory(void* bytes, std::size_t size);

class Secret {
  public:
    Secret() = default;
    Secret(std::string_view text);  // NOLINT: stands wherever a text does
    Secret(const char* text) : Secret(std::string_view(text)) {}         // NOLINT
    Secret(const std::string& text) : Secret(std::string_view(text)) {}  // NOLINT
    Secret(std::string&& text);                                          // NOLINT: and wipes it
    Secret(const Secret& other) : Secret(other.View()) {}
    Secret(Secret&& other) noexcept { *this = std::move(other); }
    Secret& operator=(const Secret& other) { return *this = Secret(other); }
    Secret& operator=(Secret&& other) noexcept {
        std::swap(m_bytes, other.m_bytes);
        std::swap(m_size, other.m_size);
        std::swap(m_guarded, other.m_guarded);
        return *this;
    }
    ~Secret();

    // Of an empty one it points somewhere, too: libraries want that.
    std::string_view View() const {
        return m_bytes == nullptr ? std::string_view("") : std::string_view(m_bytes, m_size);
    }
    std::size_t size() const { return m_size; }  // NOLINT: as texts have it
    bool empty() const { return m_size == 0; }   // NOLINT

    friend bool operator==(const Secret& secret, std::string_view text) {
        return secret.View() == text;
    }

  private:
    char* m_bytes = nullptr;  // none of an empty text
    std::size_t m_size = 0;
    bool m_guarded = false;
};

}  // namespace kalvex::platform
