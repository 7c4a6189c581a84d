#include "platform/Profile.h"

#include <charconv>

namespace kalvex::platform {

int Profile::GetProfileIntEx(std::string_view section, std::string_view key, int fallback,
                             const std::string& path) const {
    const std::string text = GetProfileStringEx(section, key, {}, path);
    int value = fallback;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

bool Profile::WriteProfileIntEx(std::string_view section, std::string_view key, int value,
                                const std::string& path) {
    return WriteProfileStringEx(section, key, std::to_string(value), path);
}

}  // namespace kalvex::platform
