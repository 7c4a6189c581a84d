#include "platform/UserSession.h"

#include "text/CodePage.h"

namespace kalvex::platform {

namespace {

constexpr const char* kTrusted =
    Translatable("Brak pliku użytkowników: konto %s ma w tym oknie poziom %d");

}  // namespace

std::string UserSession::TrustAccount(const Translator& translator) {
    m_trusted.emplace();
    m_trusted->name = m_account;
    m_trusted->level = kHighestLevel;
    return text::FromUtf8(
        InWords({kTrusted, {text::ToUtf8(m_account), std::to_string(kHighestLevel)}}, translator));
}

bool UserSession::RegisterUser(std::string_view name, std::string_view password) {
    UserFinding user = m_store.FindAside(name);
    if (!user.record || !CheckPassword(user.hash, password)) return false;
    Logout();
    m_user = std::move(user.record);
    m_password = password;
    return true;
}

void UserSession::Logout() {
    m_user.reset();
    m_password = {};
}

const UserRecord* UserSession::ActiveUser() const {
    const std::optional<UserRecord>& active = m_user ? m_user : m_trusted;
    return active ? &*active : nullptr;
}

bool UserSession::CheckRight(int level) const {
    const UserRecord* const user = ActiveUser();
    return (user == nullptr ? 0 : user->level) >= level;
}

bool UserSession::CheckActiveUserRight(std::string_view right, std::string_view address) const {
    const UserRecord* const user = ActiveUser();
    return user != nullptr && HasRight(*user, right, address);
}

bool UserSession::ActiveUserInfo(std::string& name, std::string& password) const {
    name = m_user ? m_user->name : std::string();
    password = m_password.View();
    return m_user.has_value();
}

std::string UserSession::GetActiveUserName() const {
    const UserRecord* const user = ActiveUser();
    return user == nullptr ? std::string() : user->name;
}

std::string UserSession::GetActiveUserDescription() const {
    const UserRecord* const user = ActiveUser();
    return user == nullptr ? std::string() : user->description;
}

}  // namespace kalvex::platform
