// Messages as bytes and back: the parcels of sorvane.proto. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "vantrel/Messages.h"

namespace kalvex::vantrel {

// Bounds of a parcel; sizes in bytes, of texts in UTF-8.
inline constexpr std::size_t kMaxParcelBytes = 4 << 20;
inline constexpr std::size_t kMaxTextBytes = 1 << 20;
inline constexpr std::size_t kMaxNameBytes = 1024;
inline constexpr std::size_t kMaxListEntries = 131072;
inline constexpr std::size_t kMaxAddresses = 8;  // of a farewell

// The words of the transport itself. Reasons are those of vantrel/Codes.h.
struct Heartbeat {};
struct Farewell {
    std::uint32_t reason = 0;
    std::vector<std::string> addresses = {};  // where the client may go instead
};
struct Greeting {
    std::uint16_t protocolVersion = kProtocolVersion;
    std::string source = {};  // the server's name
    std::string node = {};    // of servers that stand in for one another
    std::uint64_t term = 0;
};

using ClientParcel = std::variant<ClientMessage, Heartbeat, Farewell>;
using ServerParcel = std::variant<ServerMessage, Heartbeat, Farewell, Greeting>;

// A message in as many parcels as it takes; each but the last one of a message with a field `last`
// has that field cleared. What is beyond the bounds is left out.
struct PackedRequest {
    std::vector<std::string> parcels;
    std::vector<ServerMessage> refusals;  // the answers to what was left out
};
struct PackedAnswer {
    std::vector<std::string> parcels;
    std::size_t leftOut = 0;  // entries
};
PackedRequest Pack(const ClientMessage& message);
PackedAnswer Pack(const ServerMessage& message);

// The same bytes from a client and from a server.
std::string Pack(Heartbeat);
std::string Pack(const Farewell& farewell);
std::string Pack(const Greeting& greeting);  // a server's only

// What is wrong with bytes that are no parcel. The words are translated where they are told.
// X(name, Polish words in UTF-8)
#define KALVEX_WIRE_FAULTS(X)                                           \
    X(None, "")                                                         \
    X(NotAParcel, "to nie jest komunikat protokołu")                    \
    X(ParcelTooLarge, "komunikat jest za duży")                         \
    X(ListTooLong, "za dużo pozycji w komunikacie")                     \
    X(NameTooLong, "nazwa jest za długa")                               \
    X(TextTooLong, "tekst jest za długi")                               \
    X(NumberOutOfRange, "liczba jest spoza zakresu")                    \
    X(ColumnsDiffer, "kolumny komunikatu są różnej długości")           \
    X(ContentMissing, "wartość nie ma treści, którą zapowiada jej typ") \
    X(NoMemory, "brak pamięci")

enum class WireFault : std::uint8_t {
#define KALVEX_ROW(name, text) name,
    KALVEX_WIRE_FAULTS(KALVEX_ROW)
#undef KALVEX_ROW
};

const char* WireFaultText(WireFault fault);

// A parcel whose content this side does not know is taken for a sign of life. The parcel is
// undefined when there is a fault.
WireFault Unpack(std::string_view bytes, ClientParcel& parcel);
WireFault Unpack(std::string_view bytes, ServerParcel& parcel);

}  // namespace kalvex::vantrel
