#include "vantrel/network/Outbox.h"

#include <utility>

namespace kalvex::vantrel {

Outbox::Put Outbox::Add(std::string parcel) {
    const std::lock_guard lock(m_mutex);
    if (m_bClosed) return Put::Queued;
    if (m_nBytes + parcel.size() > m_nLimit) return Put::Full;
    m_nBytes += parcel.size();
    m_arrParcels.push_back(std::move(parcel));
    return Wake();
}

Outbox::Put Outbox::Close() {
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_bClosed, true)) return Put::Queued;
    return Wake();
}

Outbox::Put Outbox::Wake() {
    if (std::exchange(m_bWriting, true)) return Put::Queued;
    m_bMoved = true;
    return Put::WriterNeeded;
}

Outbox::Next Outbox::Take(std::string& parcel, bool& drained) {
    const std::lock_guard lock(m_mutex);
    m_bMoved = true;
    drained = false;
    m_bTaken = !m_arrParcels.empty();
    if (m_bTaken) {
        parcel = std::move(m_arrParcels.front());
        m_arrParcels.pop_front();
        m_nBytes -= parcel.size();
        return Next::Parcel;
    }
    if (m_bClosed) return Next::End;
    m_bWriting = false;
    drained = std::exchange(m_bBacklogSeen, false);
    return Next::Nothing;
}

std::size_t Outbox::Backlog() const {
    const std::lock_guard lock(m_mutex);
    const std::size_t backlog = m_arrParcels.size() + (m_bTaken ? 1 : 0);
    if (backlog > 0) m_bBacklogSeen = true;
    return backlog;
}

bool Outbox::IsStuck() {
    const std::lock_guard lock(m_mutex);
    return !std::exchange(m_bMoved, false) && m_bWriting;
}

}  // namespace kalvex::vantrel
