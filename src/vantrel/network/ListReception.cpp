#include "vantrel/network/ListReception.h"

#include <iterator>
#include <utility>

namespace kalvex::vantrel {

bool ListReception::Await(std::chrono::milliseconds patience,
                          std::vector<VariableDefinition>& list) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, patience, [this] { return m_bEnded; });
    if (!m_bEnded || !m_bWhole || !m_bGood) return false;
    list = std::move(m_arrList);
    return true;
}

bool ListReception::OnParcel(std::string_view bytes) {
    ServerParcel parcel;
    const WireFault fault = Unpack(bytes, parcel);
    auto* message = std::get_if<ServerMessage>(&parcel);
    auto* piece = message == nullptr ? nullptr : std::get_if<VariableDefinitions>(message);
    const std::lock_guard lock(m_mutex);
    if (fault != WireFault::None) m_bGood = false;
    if (piece == nullptr || !m_bGood) return true;
    // A server that has more is none that should be listened to.
    m_bGood = m_arrList.size() + piece->definitions.size() <= kMostVariables;
    m_bWhole = piece->last;
    std::move(piece->definitions.begin(), piece->definitions.end(), std::back_inserter(m_arrList));
    return true;
}

void ListReception::OnEnded(StreamEnd end, const std::string&) {
    const std::lock_guard lock(m_mutex);
    m_bEnded = true;
    // A server that has more is none that should be listened to.
    m_bGood = m_bGood && end == StreamEnd::Orderly;
    m_changed.notify_all();
}

}  // namespace kalvex::vantrel
