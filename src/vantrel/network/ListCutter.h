// Cuts the list of a message into parcels.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "vantrel/network/WireValues.h"

namespace kalvex::vantrel::wire {

// `Field` is the generated accessor of the message's place in the parcel. A message with a field
// `more` makes at least one parcel.
template <class Parcel, class Content, Content* (Parcel::*Field)()>
class ListCutter {
  public:
    explicit ListCutter(std::vector<std::string>& parcels) : m_parcels(parcels) {}

    // The message to which an entry of about so many bytes is to be added.
    Content& Next(std::size_t bytes) {
        if (m_entries == kMaxListEntries || m_bytes >= kParcelGoal) Close(true);
        ++m_entries;
        m_bytes += bytes;
        return *(m_parcel.*Field)();
    }

    // `more`: the message itself is a piece, and another one follows it.
    void Finish(bool more = false) {
        constexpr bool kHasMore = requires(Content & content) {
            content.set_more(more);
        };
        if (kHasMore || m_entries > 0) Close(more);
    }

    // What every piece bears.
    Parcel& Pattern() { return m_pattern; }

  private:
    void Close([[maybe_unused]] bool more) {
        Content& content = *(m_parcel.*Field)();
        content.MergeFrom(*(m_pattern.*Field)());
        if constexpr (requires { content.set_more(more); }) content.set_more(more);
        if constexpr (requires { content.mutable_values()->mutable_types(); }) {
            Squeeze(*content.mutable_values());
        }
        m_parcels.push_back(m_parcel.SerializeAsString());
        m_parcel.Clear();
        m_entries = 0;
        m_bytes = 0;
    }

    std::vector<std::string>& m_parcels;
    Parcel m_pattern;
    Parcel m_parcel;
    std::size_t m_entries = 0;
    std::size_t m_bytes = 0;
};

#define KALVEX_LIST_CUTTER(parcel, Content, field) \
    kalvex::vantrel::wire::ListCutter<pb::parcel, pb::Content, &pb::parcel::mutable_##field>

}  // namespace kalvex::vantrel::wire
