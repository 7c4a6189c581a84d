// What holds of each parcel, whichever way it goes.
#pragma once

#include <string_view>
#include <variant>

#include "fuzz/fuzz.h"
#include "vantrel/network/Parcel.h"

namespace kalvex::fuzz {

inline bool IsWhole(const vantrel::PackedRequest& packed) {
    return packed.refusals.empty();
}
inline bool IsWhole(const vantrel::PackedAnswer& packed) {
    return packed.leftOut == 0;
}

// What has been decoded can be sent in full, and comes out of its bytes as it went in.
template <class Parcel>
void CheckParcel(std::string_view bytes) {
    Parcel parcel;
    if (vantrel::Unpack(bytes, parcel) != vantrel::WireFault::None) return;
    const auto* message = std::get_if<0>(&parcel);
    if (message == nullptr) return;
    const auto packed = vantrel::Pack(*message);
    Demand(IsWhole(packed), "something of a decoded message cannot be sent");
    for (const std::string& piece : packed.parcels) {
        Parcel again;
        Demand(vantrel::Unpack(piece, again) == vantrel::WireFault::None,
               "a piece does not decode");
        Demand(std::holds_alternative<std::variant_alternative_t<0, Parcel>>(again),
               "a piece is no message");
        const auto repacked = vantrel::Pack(std::get<0>(again));
        Demand(repacked.parcels.size() == 1 && repacked.parcels.front() == piece,
               "a piece changes on its way");
    }
}

}  // namespace kalvex::fuzz
