#include "vantrel/network/ListReception.h"

#include <iterator>
#include <utility>

namespace kalvex::vantrel {

bool ListReception::Await(std::chrono::milliseconds patience,
                          std::vector<VariableDefinition>& list) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, patience, [this] { return m_ended; });
    if (!m_ended || !m_whole || !m_good) return false;
    list = std::move(m_list);
    return true;
}

bool ListReception::OnParcel(std::string_view bytes) {
    ServerParcel parcel;
    const WireFault fault = Unpack(bytes, parcel);
    auto* message = std::get_if<ServerMessage>(&parcel);
    auto* piece = message == nullptr ? nullptr : std::get_if<VariableDefinitions>(message);
    const std::lock_guard lock(m_mutex);
    if (fault != WireFault::None) m_good = false;
    if (piece == nullptr || !m_good) return true;
    // A server that has more is none that should be listened to.
    m_good = m_list.size() + piece->definitions.size() <= kMostVariables;
    m_whole = piece->last;
    std::move(piece->definitions.begin(), piece->definitions.end(), std::back_inserter(m_list));
    return true;
}

void ListReception::OnEnded(StreamEnd end, const std::string&) {
    {
        const std::lock_guard lock(m_mutex);
        m_ended = true;
        // A server that has more is none that should be listened to.
        m_good = m_good && end == StreamEnd::Orderly;
        m_changed.notify_all();
    }
    m_tellEnd();
}

}  // namespace kalvex::vantrel
