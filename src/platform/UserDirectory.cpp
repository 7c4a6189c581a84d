#include "platform/UserDirectory.h"

#include <algorithm>
#include <optional>

#include "platform/AddressRange.h"
#include "text/WholeNumber.h"

namespace kalvex::platform {

namespace {

std::optional<int> LevelOf(std::string_view right) {
    const auto level = text::ReadWholeNumber<int>(right);
    return level && *level >= 0 && *level <= kHighestLevel ? level : std::nullopt;
}

}  // namespace

bool IsRightText(std::string_view right) {
    return LevelOf(right) || right.find_first_not_of("0123456789") != std::string_view::npos;
}

bool MayComeFrom(const UserRecord& user, std::string_view address) {
    if (user.addresses.empty() || address.empty()) return true;
    return std::any_of(user.addresses.begin(), user.addresses.end(),
                       [address](const std::string& range) { return IsInRange(address, range); });
}

bool HasRight(const UserRecord& user, std::string_view right, std::string_view address) {
    if (!MayComeFrom(user, address)) return false;
    if (const std::optional<int> level = LevelOf(right)) return user.level >= *level;
    return std::find(user.groups.begin(), user.groups.end(), right) != user.groups.end();
}

}  // namespace kalvex::platform
