#include "vantrel/network/Outbox.h"

#include <utility>

namespace kalvex::vantrel {

Outbox::Put Outbox::Add(std::string parcel) {
    const std::lock_guard lock(m_mutex);
    if (m_closed) return Put::Queued;
    if (m_bytes + parcel.size() > m_limit) return Put::Full;
    m_bytes += parcel.size();
    m_parcels.push_back(std::move(parcel));
    return Wake();
}

Outbox::Put Outbox::Close() {
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_closed, true)) return Put::Queued;
    return Wake();
}

Outbox::Put Outbox::Wake() {
    if (std::exchange(m_writing, true)) return Put::Queued;
    m_moved = true;
    return Put::WriterNeeded;
}

Outbox::Next Outbox::Take(std::string& parcel, bool& drained) {
    const std::lock_guard lock(m_mutex);
    m_moved = true;
    drained = false;
    m_taken = !m_parcels.empty();
    if (m_taken) {
        parcel = std::move(m_parcels.front());
        m_parcels.pop_front();
        m_bytes -= parcel.size();
        return Next::Parcel;
    }
    if (m_closed) return Next::End;
    m_writing = false;
    drained = std::exchange(m_backlogSeen, false);
    return Next::Nothing;
}

std::size_t Outbox::Backlog() const {
    const std::lock_guard lock(m_mutex);
    const std::size_t backlog = m_parcels.size() + (m_taken ? 1 : 0);
    if (backlog > 0) m_backlogSeen = true;
    return backlog;
}

bool Outbox::IsStuck() {
    const std::lock_guard lock(m_mutex);
    return !std::exchange(m_moved, false) && m_writing;
}

}  // namespace kalvex::vantrel
