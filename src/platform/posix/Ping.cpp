#include "platform/posix/Ping.h"

#include <linux/errqueue.h>
#include <netinet/ip.h>
#include <netinet/ip_icmp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <iterator>

#include "platform/NetworkProbes.h"

namespace kalvex::platform {

namespace {

constexpr std::size_t kDataLength = 32;
constexpr std::uint8_t kFirstDataByte = 32;
constexpr int kTimeToLive = 64;
constexpr std::size_t kReplyLength = 8232;
constexpr int kAnyCode = -1;

struct IcmpRow {
    int type;
    int code;
    int result;
};

constexpr IcmpRow kIcmpRows[] = {
    {ICMP_DEST_UNREACH, ICMP_NET_UNREACH, PingNetUnreachable},
    {ICMP_DEST_UNREACH, ICMP_PROT_UNREACH, PingProtocolUnreachable},
    {ICMP_DEST_UNREACH, ICMP_PORT_UNREACH, PingPortUnreachable},
    {ICMP_DEST_UNREACH, ICMP_FRAG_NEEDED, PingTooBig},
    {ICMP_DEST_UNREACH, ICMP_NET_UNKNOWN, PingNetUnreachable},
    {ICMP_DEST_UNREACH, ICMP_NET_ANO, PingNetUnreachable},
    {ICMP_DEST_UNREACH, kAnyCode, PingHostUnreachable},
    {ICMP_SOURCE_QUENCH, kAnyCode, PingSourceQuench},
    {ICMP_TIME_EXCEEDED, ICMP_EXC_FRAGTIME, PingExpiredInPieces},
    {ICMP_TIME_EXCEEDED, kAnyCode, PingExpired},
    {ICMP_PARAMETERPROB, kAnyCode, PingBadParameter},
};

struct ErrnoRow {
    int code;
    int result;
};

constexpr ErrnoRow kErrnoRows[] = {
    {ENETUNREACH, PingNetUnreachable},
    {ENETDOWN, PingNetUnreachable},
    {EHOSTUNREACH, PingHostUnreachable},
    {EHOSTDOWN, PingHostUnreachable},
    {EMSGSIZE, PingTooBig},
};

int ResultOfErrno(int code) {
    const auto found = std::ranges::find(kErrnoRows, code, &ErrnoRow::code);
    return found == std::end(kErrnoRows) ? PingGeneralFailure : found->result;
}

// An ICMP header as far as an echo has one.
struct EchoHeader {
    int type;
    int code;
    std::uint16_t identifier;
    std::uint16_t sequence;
};

std::uint16_t Word(std::span<const std::uint8_t> bytes, std::size_t at) {
    return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}

void PutWord(std::span<std::uint8_t> bytes, std::size_t at, std::uint16_t word) {
    bytes[at] = static_cast<std::uint8_t>(word >> 8);
    bytes[at + 1] = static_cast<std::uint8_t>(word);
}

constexpr std::size_t kEchoHeaderLength = 8;

// The bytes behind an IP header that announces ICMP; none if it announces anything else.
std::span<const std::uint8_t> BehindIpHeader(std::span<const std::uint8_t> packet) {
    constexpr std::size_t kLeast = 20;
    constexpr std::size_t kProtocolAt = 9;
    if (packet.size() < kLeast || packet[0] >> 4 != 4) return {};
    const std::size_t length = std::size_t{4} * (packet[0] & 0x0F);
    if (length < kLeast || packet.size() < length) return {};
    if (packet[kProtocolAt] != IPPROTO_ICMP) return {};
    return packet.subspan(length);
}

bool IsOwn(std::span<const std::uint8_t> message, int type, std::uint16_t identifier,
           std::uint16_t sequence) {
    return message.size() >= kEchoHeaderLength && message[0] == type &&
           Word(message, 4) == identifier && Word(message, 6) == sequence;
}

class PingSocket {
  public:
    PingSocket() {
        m_fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_ICMP);
        if (m_fd < 0) {
            m_raw = true;
            m_fd = socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_ICMP);
        }
        if (m_fd < 0) return;
        setsockopt(m_fd, IPPROTO_IP, IP_TTL, &kTimeToLive, sizeof kTimeToLive);
        const int on = 1;
        if (!m_raw) setsockopt(m_fd, IPPROTO_IP, IP_RECVERR, &on, sizeof on);
    }
    ~PingSocket() {
        if (m_fd >= 0) close(m_fd);
    }
    PingSocket(const PingSocket&) = delete;
    PingSocket& operator=(const PingSocket&) = delete;

    bool IsOpen() const { return m_fd >= 0; }

    int Exchange(const sockaddr_in& host, std::uint32_t timeout) {
        using Clock = std::chrono::steady_clock;
        const std::vector<std::uint8_t> request = MakeEchoRequest(m_identifier, kSequence);
        const Clock::time_point start = Clock::now();
        if (sendto(m_fd, request.data(), request.size(), 0,
                   reinterpret_cast<const sockaddr*>(&host), sizeof host) < 0) {
            return ResultOfErrno(errno);
        }
        const auto elapsed = [start] {
            return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start)
                .count();
        };
        for (;;) {
            const std::int64_t left = std::max<std::int64_t>(timeout - elapsed(), 0);
            pollfd ready{m_fd, POLLIN, 0};
            const int count =
                poll(&ready, 1, static_cast<int>(std::min<std::int64_t>(left, INT_MAX)));
            if (count == 0 && left <= INT_MAX) return PingNoReply;
            if (count <= 0) continue;
            const EchoReading reading = (ready.revents & POLLERR) != 0 ? ReadError() : ReadPacket();
            if (reading.answer == EchoAnswer::Refusal) return reading.result;
            if (reading.answer == EchoAnswer::Reply) return static_cast<int>(elapsed());
        }
    }

  private:
    static constexpr std::uint16_t kSequence = 1;

    EchoReading ReadPacket() {
        std::uint8_t buffer[kReplyLength];
        const ssize_t length = recv(m_fd, buffer, sizeof buffer, MSG_DONTWAIT);
        if (length < 0) return {};
        const std::span<const std::uint8_t> packet(buffer, static_cast<std::size_t>(length));
        if (m_raw) return ReadRawPacket(packet, m_identifier, kSequence);
        // The system hands a datagram socket the replies to its own requests and nothing else.
        const bool reply = packet.size() >= kEchoHeaderLength && packet[0] == ICMP_ECHOREPLY;
        return {reply ? EchoAnswer::Reply : EchoAnswer::Foreign, 0};
    }

    // What the system keeps of an ICMP message on a request of this socket.
    EchoReading ReadError() {
        std::uint8_t control[512];
        msghdr message{};
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        if (recvmsg(m_fd, &message, MSG_ERRQUEUE | MSG_DONTWAIT) < 0) return ReadSocketError();
        for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr;
             part = CMSG_NXTHDR(&message, part)) {
            if (part->cmsg_level != IPPROTO_IP || part->cmsg_type != IP_RECVERR) continue;
            sock_extended_err error;
            std::memcpy(&error, CMSG_DATA(part), sizeof error);
            const bool fromRouter = error.ee_origin == SO_EE_ORIGIN_ICMP;
            return {EchoAnswer::Refusal, fromRouter
                                             ? ResultOfIcmp(error.ee_type, error.ee_code)
                                             : ResultOfErrno(static_cast<int>(error.ee_errno))};
        }
        return {};
    }

    EchoReading ReadSocketError() {
        int code = 0;
        socklen_t length = sizeof code;
        getsockopt(m_fd, SOL_SOCKET, SO_ERROR, &code, &length);
        return code == 0 ? EchoReading() : EchoReading{EchoAnswer::Refusal, ResultOfErrno(code)};
    }

    static std::uint16_t NextIdentifier() {
        static std::atomic<unsigned> counter{static_cast<unsigned>(getpid())};
        return static_cast<std::uint16_t>(counter.fetch_add(1));
    }

    int m_fd = -1;
    bool m_raw = false;
    std::uint16_t m_identifier = NextIdentifier();  // a datagram socket is given its own
};

}  // namespace

std::uint16_t InternetChecksum(std::span<const std::uint8_t> bytes) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) sum += Word(bytes, i);
    if (bytes.size() % 2 != 0) sum += static_cast<std::uint32_t>(bytes.back()) << 8;
    while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<std::uint16_t>(~sum);
}

std::vector<std::uint8_t> MakeEchoRequest(std::uint16_t identifier, std::uint16_t sequence) {
    std::vector<std::uint8_t> packet(kEchoHeaderLength + kDataLength);
    packet[0] = ICMP_ECHO;
    PutWord(packet, 4, identifier);
    PutWord(packet, 6, sequence);
    for (std::size_t i = 0; i < kDataLength; ++i) {
        packet[kEchoHeaderLength + i] = static_cast<std::uint8_t>(kFirstDataByte + i);
    }
    PutWord(packet, 2, InternetChecksum(packet));
    return packet;
}

int ResultOfIcmp(int type, int code) {
    const auto found = std::ranges::find_if(kIcmpRows, [type, code](const IcmpRow& row) {
        return row.type == type && (row.code == kAnyCode || row.code == code);
    });
    return found == std::end(kIcmpRows) ? PingGeneralFailure : found->result;
}

EchoReading ReadRawPacket(std::span<const std::uint8_t> packet, std::uint16_t identifier,
                          std::uint16_t sequence) {
    const std::span<const std::uint8_t> message = BehindIpHeader(packet);
    if (IsOwn(message, ICMP_ECHOREPLY, identifier, sequence)) return {EchoAnswer::Reply, 0};
    constexpr int kTold[] = {ICMP_DEST_UNREACH, ICMP_SOURCE_QUENCH, ICMP_TIME_EXCEEDED,
                             ICMP_PARAMETERPROB};
    if (message.size() < kEchoHeaderLength) return {};
    if (std::ranges::find(kTold, message[0]) == std::end(kTold)) return {};
    // The message quotes the packet that it is about.
    const std::span<const std::uint8_t> quoted = BehindIpHeader(message.subspan(kEchoHeaderLength));
    if (!IsOwn(quoted, ICMP_ECHO, identifier, sequence)) return {};
    return {EchoAnswer::Refusal, ResultOfIcmp(message[0], message[1])};
}

int PingHost(const sockaddr_in& host, std::uint32_t timeoutMilliseconds) {
    PingSocket socket;
    return socket.IsOpen() ? socket.Exchange(host, timeoutMilliseconds) : PingNoPermission;
}

}  // namespace kalvex::platform
