#include "vantrel/network/Listener.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/SteadyTime.h"
#include "platform/Threads.h"

namespace kalvex::vantrel {

namespace {

using platform::Descriptor;

constexpr std::int64_t kDialEvery = 10'000;
// In milliseconds: when the system has no means, and between two searches for room.
constexpr int kPause = 100;
constexpr int kAcceptsAtOnce = 64;
constexpr int kMostOwnDescriptors = 64;
// Calls that a client may take back, and in what time.
constexpr int kMostTakenBack = 200;
constexpr std::int64_t kCountFor = 1'000;
constexpr std::size_t kMostEvents = 16;  // of which it is told who

constexpr const char* kNotListening = platform::Translatable("Nie można nasłuchiwać %s (%s)");
constexpr const char* kRemade =
    platform::Translatable("Gniazdo %s nie odpowiadało, jest otwarte na nowo");

int DescriptorLimit() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    return static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 1 << 20));
}

// For files, programs and whatever else is no client.
int OwnDescriptors(int limit) {
    return std::min(limit / 4, kMostOwnDescriptors);
}

std::size_t ConnectionLimit(std::size_t wanted) {
    const int limit = DescriptorLimit();
    return std::min(wanted, static_cast<std::size_t>(limit - 2 * OwnDescriptors(limit)));
}

Descriptor MakeReserve() {
    return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

// 0 for a descriptor that is none.
std::uint64_t InodeOf(int descriptor) {
    struct stat status;
    return ::fstat(descriptor, &status) == 0 ? status.st_ino : 0;
}

// As Visitors counts: the account behind a local socket, else the machine.
std::string CallerAt(const Descriptor& client, const SocketAddress& address) {
    if (address.storage.ss_family != AF_UNIX) return PeerOf(address.Get(), address.length).host;
    ucred account{};
    socklen_t length = sizeof account;
    ::getsockopt(client.Get(), SOL_SOCKET, SO_PEERCRED, &account, &length);
    return "uid " + std::to_string(account.uid);
}

}  // namespace

const Listener::EventRow Listener::kEventRows[] = {
    {Event::Crowd, platform::Translatable("Odmowa połączenia (%s): za dużo połączeń (%s)")},
    {Event::CrowdOfOne,
     platform::Translatable("Odmowa połączenia (%s): za dużo połączeń stamtąd (%s)")},
    {Event::Lack, platform::Translatable("Odmowa połączenia (%s): brak deskryptorów plików (%s)")},
    {Event::Silence,
     platform::Translatable("Połączenie szyfrowane (%s) skończyło się przed rozmową (%s)")},
    {Event::Flood,
     platform::Translatable("Połączenie (%s) zerwane: za dużo odwołanych wywołań (%s)")},
};

Listener::Listener(const ListenerSettings& settings)
    : m_settings(settings),
      m_visitors(ConnectionLimit(settings.connectionLimit)),
      m_descriptorLimit(DescriptorLimit()) {}

Listener::~Listener() {
    Stop();
}

bool Listener::Open(platform::Notice& error) {
    m_wake = Descriptor(platform::CheckedDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)));
    m_reserve = MakeReserve();
    std::string why;
    const auto fail = [&](const std::string& name) {
        error = {kNotListening, {name, why}};
        return false;
    };
    if (!m_settings.localSocket.empty()) {
        Place place{.name = m_settings.localSocket, .local = true};
        place.address = AddressOfPath(m_settings.localSocket);
        if (!ListenTo(std::move(place), why)) return fail(m_settings.localSocket);
    }
    if (m_settings.address.empty()) return true;
    bool listens = false;
    for (SocketAddress& address : FindAddresses(m_settings.address, why)) {
        Place place{.name = m_settings.address};
        place.address = address;
        if (m_tcpPort != 0) SetPort(place.address, m_tcpPort);
        listens = ListenTo(std::move(place), why) || listens;
    }
    return listens || fail(m_settings.address);
}

bool Listener::ListenTo(Place place, std::string& error) {
    place.socket = ListenAt(place.address, error);
    if (place.socket.Get() < 0) return false;
    if (!place.local) m_tcpPort = PortOf(place.address);
    m_places.push_back(std::move(place));
    return true;
}

void Listener::Start(Take take) {
    m_take = std::move(take);
    StartThread();
}

// Where the system has no thread to give, the next look tries again; the clients wait.
void Listener::StartThread() {
    if (!m_take || m_stopped || m_thread.joinable()) return;
    m_thread = platform::StartThread({"listener"}, [this] { Run(); });
}

void Listener::Stop() {
    m_stopped = true;
    if (m_thread.joinable()) {
        Wake();
        m_thread.join();
    }
    const std::lock_guard lock(m_mutex);
    m_places.clear();
}

void Listener::Wake() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(m_wake.Get(), &one, sizeof one);
}

// ---- the thread

std::vector<pollfd> Listener::Watched() {
    std::vector<pollfd> watched{{m_wake.Get(), POLLIN, 0}};
    const std::lock_guard lock(m_mutex);
    for (const Place& place : m_places) {
        if (place.socket.Get() >= 0) watched.push_back({place.socket.Get(), POLLIN, 0});
    }
    return watched;
}

void Listener::Run() {
    while (!m_stopped) {
        std::vector<pollfd> watched = Watched();
        ::poll(watched.data(), watched.size(), -1);
        bool able = true;
        for (const pollfd& one : watched) {
            if (one.revents == 0) continue;
            std::uint64_t count = 0;
            if (one.fd == m_wake.Get()) {
                [[maybe_unused]] const auto read = ::read(one.fd, &count, sizeof count);
            } else {
                able = AcceptSome(one.fd) && able;
            }
        }
        if (!able) ::poll(watched.data(), 1, kPause);
        ForgetGone();
        ++m_rounds;
    }
}

bool Listener::AcceptSome(int socket) {
    for (int i = 0; i < kAcceptsAtOnce; ++i) {
        SocketAddress address;
        address.length = sizeof address.storage;
        Descriptor client(
            ::accept4(socket, &address.Get(), &address.length, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (client.Get() < 0) {
            if (errno == EMFILE || errno == ENFILE) return RefuseOne(socket);
            return errno == EAGAIN || errno == EINTR || errno == ECONNABORTED;
        }
        bool local = false;
        if (IsAdmitted(socket, client, address, local)) m_take(client.Release(), local);
    }
    return true;
}

// Whoever waits is better told than left to wait: the reserve is given for the moment.
bool Listener::RefuseOne(int socket) {
    m_reserve = Descriptor(-1);
    SocketAddress address;
    address.length = sizeof address.storage;
    Descriptor client(::accept4(socket, &address.Get(), &address.length, SOCK_CLOEXEC));
    if (client.Get() < 0) {
        m_reserve = MakeReserve();
        return false;
    }
    {
        const std::lock_guard lock(m_mutex);
        Note(Event::Lack, CallerAt(client, address));
    }
    client = Descriptor(-1);
    m_reserve = MakeReserve();
    return true;
}

// It is entered before the library has it: its calls may come at once.
bool Listener::IsAdmitted(int socket, const Descriptor& client, const SocketAddress& address,
                          bool& local) {
    const std::lock_guard lock(m_mutex);
    const auto place = std::ranges::find_if(
        m_places, [socket](const Place& one) { return one.socket.Get() == socket; });
    if (place == m_places.end()) return false;
    if (place->dial.Get() >= 0 && NameOf(address) == place->dialledFrom) {
        place->dial = Descriptor(-1);
        return false;
    }
    local = place->local;
    Connection connection{.inode = InodeOf(client.Get()),
                          .from = CallerAt(client, address),
                          .peer = PeerOf(address.Get(), address.length),
                          .local = local};
    if (m_connections.contains(client.Get())) ForgetIfGone(client.Get());
    if (client.Get() >= m_descriptorLimit - OwnDescriptors(m_descriptorLimit)) {
        Note(Event::Lack, connection.from);
        return false;
    }
    if (!HasRoom(connection)) return false;
    const int on = 1;
    if (!local) ::setsockopt(client.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    m_visitors.OnCome(connection.from);
    if (!connection.peer.place.empty()) m_byPlace[connection.peer.place] = client.Get();
    m_connections[client.Get()] = std::move(connection);
    return true;
}

// Those that have gone are looked for before somebody is refused, but not at each blow of a flood.
bool Listener::HasRoom(const Connection& connection) {
    const auto ask = [&] {
        return m_visitors.Ask(connection.from, connection.peer.host.empty(), m_now);
    };
    Visitors::Entry entry = ask();
    const std::int64_t now = platform::SteadyMilliseconds();
    if (entry != Visitors::Entry::Granted && now - m_searched >= kPause) {
        m_searched = now;
        for (const int descriptor : Descriptors()) ForgetIfGone(descriptor);
        entry = ask();
    }
    if (entry == Visitors::Entry::Granted) return true;
    Note(entry == Visitors::Entry::Crowd ? Event::Crowd : Event::CrowdOfOne, connection.from);
    return false;
}

void Listener::Note(Event event, const std::string& from) {
    const auto known = m_events.find({event, from});
    if (known != m_events.end()) {
        ++known->second;
    } else {
        ++m_events[{event, m_events.size() < kMostEvents ? from : "..."}];
    }
}

std::vector<int> Listener::Descriptors() const {
    std::vector<int> descriptors;
    for (const auto& [descriptor, connection] : m_connections) descriptors.push_back(descriptor);
    return descriptors;
}

// One at a time, so that nobody waits for all of them.
void Listener::ForgetGone() {
    std::unique_lock lock(m_mutex);
    if (!std::exchange(m_looks, false)) return;
    const std::vector<int> descriptors = Descriptors();
    for (const int descriptor : descriptors) {
        ForgetIfGone(descriptor);
        lock.unlock();
        lock.lock();
    }
}

void Listener::ForgetIfGone(int descriptor) {
    const auto found = m_connections.find(descriptor);
    if (InodeOf(descriptor) == found->second.inode) return;
    const Connection& gone = found->second;
    if (m_settings.encrypted && !gone.local && !gone.called) Note(Event::Silence, gone.from);
    m_visitors.OnGone(gone.from);
    const auto place = m_byPlace.find(gone.peer.place);
    if (place != m_byPlace.end() && place->second == descriptor) m_byPlace.erase(place);
    m_connections.erase(found);
}

// ---- the calls

void Listener::OnCall(const Peer& peer) {
    const std::lock_guard lock(m_mutex);
    const auto place = m_byPlace.find(peer.place);
    if (place != m_byPlace.end()) m_connections[place->second].called = true;
}

void Listener::OnTakenBack(const Peer& peer) {
    const std::lock_guard lock(m_mutex);
    const auto place = m_byPlace.find(peer.place);
    if (place != m_byPlace.end()) ++m_connections[place->second].takenBack;
}

void Listener::OnLogin(const std::string& host) {
    const std::lock_guard lock(m_mutex);
    m_visitors.OnLogin(host, m_now);
}

// A copy of the descriptor stays what it is, whoever closes the other one meanwhile.
void Listener::CutFloods() {
    const bool anew = m_now - m_counted >= kCountFor;
    if (anew) m_counted = m_now;
    for (auto& [descriptor, connection] : m_connections) {
        const bool floods = connection.takenBack > kMostTakenBack;
        if (floods || anew) connection.takenBack = 0;
        if (!floods) continue;
        const Descriptor copy(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
        if (InodeOf(copy.Get()) != connection.inode) continue;
        ::shutdown(copy.Get(), SHUT_RDWR);
        Note(Event::Flood, connection.from);
    }
}

// ---- looking after it

std::vector<platform::Notice> Listener::Check(std::int64_t now, bool& remade) {
    StartThread();
    std::vector<platform::Notice> notices;
    const std::lock_guard lock(m_mutex);
    m_now = now;
    m_looks = true;
    Wake();
    CutFloods();
    for (const auto& [who, count] : std::exchange(m_events, {})) {
        const auto& [event, from] = who;
        for (const EventRow& row : kEventRows) {
            if (row.event != event) continue;
            notices.push_back(
                {row.text, {from.empty() ? "localhost" : from, std::to_string(count)}});
        }
    }
    if (now - m_dialled < kDialEvery) return notices;
    m_dialled = now;
    for (Place& place : m_places) {
        if (Answers(place)) continue;
        if (Remake(place, notices) && place.local) remade = true;
    }
    return notices;
}

// The answer is the one to the dial before; a thread that has not been there since owes none.
bool Listener::Answers(Place& place) {
    if (place.socket.Get() < 0) return false;
    if (place.dial.Get() >= 0) return m_thread.joinable() && m_rounds < place.answeredBy;
    place.answeredBy = m_rounds + 3;
    place.dial = DialTo(place.address, place.dialledFrom);
    return place.dial.Get() >= 0;
}

bool Listener::Remake(Place& place, std::vector<platform::Notice>& notices) {
    place.dial = Descriptor(-1);
    place.socket = Descriptor(-1);
    std::string why;
    place.socket = ListenAt(place.address, why);
    if (place.socket.Get() >= 0) {
        notices.push_back({kRemade, {place.name}});
    } else if (!place.isGone) {
        notices.push_back({kNotListening, {place.name, why}});
    }
    place.isGone = place.socket.Get() < 0;
    return !place.isGone;
}

}  // namespace kalvex::vantrel
