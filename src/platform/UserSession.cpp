#include "platform/UserSession.h"

namespace kalvex::platform {

bool UserSession::RegisterUser(std::string_view name, std::string_view password) {
    std::string hash;
    std::optional<UserRecord> user = m_store.Find(name, &hash);
    if (!user || !CheckPassword(hash, password)) return false;
    Logout();
    m_user = std::move(user);
    m_password = password;
    return true;
}

void UserSession::Logout() {
    m_user.reset();
    WipePassword(m_password);
}

bool UserSession::CheckRight(int level) const {
    return (m_user ? m_user->level : 0) >= level;
}

bool UserSession::CheckActiveUserRight(std::string_view right, std::string_view address) const {
    return m_user && HasRight(*m_user, right, address);
}

bool UserSession::ActiveUserInfo(std::string& name, std::string& password) const {
    name = GetActiveUserName();
    password = m_password;
    return m_user.has_value();
}

std::string UserSession::GetActiveUserName() const {
    return m_user ? m_user->name : std::string();
}

std::string UserSession::GetActiveUserDescription() const {
    return m_user ? m_user->description : std::string();
}

}  // namespace kalvex::platform
