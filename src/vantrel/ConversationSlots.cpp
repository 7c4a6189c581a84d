#include "vantrel/ConversationSlots.h"

#include <algorithm>
#include <utility>

namespace kalvex::vantrel {

namespace {

constexpr std::size_t kShare = 4;       // one in so many
constexpr std::size_t kLeastShare = 2;  // of an address

}  // namespace

ConversationSlots::Entry ConversationSlots::Enter(std::uint64_t number, std::string address,
                                                  bool isKnown, std::size_t most) {
    Entry entry;
    entry.leaves = WhoLeaves(address, isKnown, most);
    if (entry.leaves == 0 && m_waiting.size() + m_loggedIn.size() >= most) return entry;
    if (entry.leaves != 0) Leave(entry.leaves);
    entry.isTaken = true;
    m_waiting.push_back({number, std::move(address), isKnown});
    return entry;
}

template <class Condition>
std::uint64_t ConversationSlots::Oldest(Condition condition) const {
    for (const Standing standing : {Standing::Silent, Standing::Checked}) {
        const auto found = std::ranges::find_if(m_waiting, [&](const Waiting& waiting) {
            return waiting.standing == standing && condition(waiting);
        });
        if (found != m_waiting.end()) return found->number;
    }
    return 0;
}

std::uint64_t ConversationSlots::WhoLeaves(const std::string& address, bool isKnown,
                                           std::size_t most) const {
    const auto isOfAddress = [&](const Waiting& waiting) { return waiting.address == address; };
    const auto isStranger = [](const Waiting& waiting) { return !waiting.isKnown; };
    const auto ofAddress = static_cast<std::size_t>(std::ranges::count_if(m_waiting, isOfAddress));
    if (ofAddress >= std::max(most / kShare, kLeastShare)) return Oldest(isOfAddress);
    const auto strangers = static_cast<std::size_t>(std::ranges::count_if(m_waiting, isStranger));
    const bool isFull = m_waiting.size() + m_loggedIn.size() >= most;
    if (isFull || (!isKnown && strangers >= most - most / kShare)) {
        const std::uint64_t stranger = Oldest(isStranger);
        if (stranger != 0 || !isFull) return stranger;
    }
    return isFull ? Oldest([](const Waiting&) { return true; }) : 0;
}

void ConversationSlots::SetStanding(std::uint64_t number, Standing standing) {
    const auto found = std::ranges::find(m_waiting, number, &Waiting::number);
    if (found != m_waiting.end()) found->standing = standing;
}

void ConversationSlots::OnLogin(std::uint64_t number) {
    std::erase_if(m_waiting, [&](const Waiting& waiting) { return waiting.number == number; });
    m_loggedIn.insert(number);
}

void ConversationSlots::Leave(std::uint64_t number) {
    std::erase_if(m_waiting, [&](const Waiting& waiting) { return waiting.number == number; });
    m_loggedIn.erase(number);
}

}  // namespace kalvex::vantrel
