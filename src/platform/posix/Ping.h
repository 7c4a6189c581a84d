// The echo of ICMP: packets as bytes, and one exchange with a host.
#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <span>
#include <vector>

namespace kalvex::platform {

// An echo request with 32 bytes of data that count up from 32, and a right checksum.
std::vector<std::uint8_t> MakeEchoRequest(std::uint16_t identifier, std::uint16_t sequence);

// The internet checksum of bytes whose own checksum is 0; of bytes with a right one it is 0.
std::uint16_t InternetChecksum(std::span<const std::uint8_t> bytes);

// The result that an ICMP message other than a reply stands for (a PingResult).
int ResultOfIcmp(int type, int code);

// What a packet says of the request: the answer to it, a router's word on it, or nothing.
enum class EchoAnswer { Foreign, Reply, Refusal };
struct EchoReading {
    EchoAnswer answer = EchoAnswer::Foreign;
    int result = 0;  // of a refusal
};
// A packet of a raw socket begins with its IP header, and all of the machine's come there.
EchoReading ReadRawPacket(std::span<const std::uint8_t> packet, std::uint16_t identifier,
                          std::uint16_t sequence);

// The round-trip time in milliseconds, or a PingResult.
int PingHost(const sockaddr_in& host, std::uint32_t timeoutMilliseconds);

}  // namespace kalvex::platform
