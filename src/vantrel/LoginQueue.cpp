#include "vantrel/LoginQueue.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/Chance.h"

namespace kalvex::vantrel {

PendingLoginPtr LoginQueue::Put(std::string_view group, PendingLoginPtr login) {
    DropUnwanted();
    auto own = Find(group);
    if (own == m_groups.end()) own = m_groups.insert(own, {std::string(group), {}});
    ++own->candidates;
    if (own->logins.size() >= m_mostOfGroup) {
        if (platform::ChanceBelow(own->candidates) >= m_mostOfGroup) return login;
        PendingLoginPtr left = DrawFrom(own);
        own->logins.push_back(std::move(login));
        return left;
    }
    own->logins.push_back(std::move(login));
    if (Size() <= m_most) return nullptr;
    const auto largest = std::ranges::max_element(
        m_groups, {}, [](const Group& other) { return other.logins.size(); });
    PendingLoginPtr left = DrawFrom(largest);
    if (largest->logins.empty()) m_groups.erase(largest);
    return left;
}

PendingLoginPtr LoginQueue::Take() {
    DropUnwanted();
    if (m_groups.empty()) return nullptr;
    const auto first = m_groups.begin();
    PendingLoginPtr login = std::move(first->logins.front());
    first->logins.pop_front();
    first->candidates = first->logins.size();
    m_groups.splice(m_groups.end(), m_groups, first);
    if (first->logins.empty()) m_groups.erase(first);
    return login;
}

PendingLoginPtr LoginQueue::Draw(std::string_view group) {
    const auto found = Find(group);
    if (found == m_groups.end()) return nullptr;
    DropUnwanted(*found);
    PendingLoginPtr login = found->logins.empty() ? nullptr : DrawFrom(found);
    found->candidates = found->logins.size();
    m_groups.splice(m_groups.end(), m_groups, found);
    if (found->logins.empty()) m_groups.erase(found);
    return login;
}

bool LoginQueue::HasRoom(std::string_view group) {
    DropUnwanted();
    const auto own = Find(group);
    return Size() < m_most && (own == m_groups.end() || own->logins.size() < m_mostOfGroup);
}

PendingLoginPtr LoginQueue::DrawFrom(GroupList::iterator group) {
    const auto drawn = group->logins.begin() +
                       static_cast<std::ptrdiff_t>(platform::ChanceBelow(group->logins.size()));
    PendingLoginPtr login = std::move(*drawn);
    group->logins.erase(drawn);
    return login;
}

std::vector<std::string> LoginQueue::Groups() const {
    std::vector<std::string> names;
    for (const Group& group : m_groups) names.push_back(group.name);
    return names;
}

std::size_t LoginQueue::Size() const {
    std::size_t size = 0;
    for (const Group& group : m_groups) size += group.logins.size();
    return size;
}

bool LoginQueue::HasGroup(std::string_view group) {
    return Find(group) != m_groups.end();
}

std::vector<PendingLoginPtr> LoginQueue::TakeGroup(std::string_view group) {
    std::vector<PendingLoginPtr> logins;
    const auto found = Find(group);
    if (found == m_groups.end()) return logins;
    std::ranges::move(found->logins, std::back_inserter(logins));
    m_groups.erase(found);
    return logins;
}

std::vector<PendingLoginPtr> LoginQueue::TakeOlder(std::int64_t since) {
    std::vector<PendingLoginPtr> older;
    for (Group& group : m_groups) {
        while (!group.logins.empty() && group.logins.front()->since < since) {
            older.push_back(std::move(group.logins.front()));
            group.logins.pop_front();
        }
    }
    std::erase_if(m_groups, [](const Group& group) { return group.logins.empty(); });
    return older;
}

LoginQueue::GroupList::iterator LoginQueue::Find(std::string_view name) {
    return std::ranges::find(m_groups, name, &Group::name);
}

void LoginQueue::DropUnwanted(Group& group) {
    std::erase_if(group.logins,
                  [](const PendingLoginPtr& login) { return login->asker.expired(); });
}

void LoginQueue::DropUnwanted() {
    for (Group& group : m_groups) DropUnwanted(group);
    std::erase_if(m_groups, [](const Group& group) { return group.logins.empty(); });
}

}  // namespace kalvex::vantrel
