// Takes in the connections of clients, in front of the library that talks to them: neither a lack
// of descriptors nor a crowd makes a server deaf, and one that has gone deaf is made anew.
#pragma once

#include <poll.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/Translator.h"
#include "platform/posix/Descriptor.h"
#include "vantrel/network/ListeningSocket.h"
#include "vantrel/network/Peer.h"
#include "vantrel/network/Visitors.h"

namespace kalvex::vantrel {

struct ListenerSettings {
    std::string localSocket = {};  // path; empty: none
    std::string address = {};      // "host:port", port 0: one that is free; empty: none
    bool encrypted = false;        // what comes to the address
    // Connections at a time; fewer where the process may not have so many descriptors.
    std::size_t connectionLimit = 8192;
};

// Main thread, unless said otherwise.
class Listener {
  public:
    // Takes the descriptor over. Called on the listener's thread.
    using Take = std::function<void(int descriptor, bool local)>;

    explicit Listener(const ListenerSettings& settings);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // Clients may come, and wait until Start. False with the reason in `error`.
    bool Open(platform::Notice& error);
    void Start(Take take);
    // Nobody comes any more.
    void Stop();
    int TcpPort() const { return m_tcpPort; }

    // What is to be said of it, and of the clients that were turned away since the last call. About
    // once a second. Dials itself from time to time; a place that does not answer is listened at
    // anew, and `remade` is set when that was the local socket.
    std::vector<platform::Notice> Check(std::int64_t now, bool& remade);

    // A client from there has called, or has taken calls back. Any thread.
    void OnCall(const Peer& peer);
    void OnTakenBack(const Peer& peer);
    // Somebody has logged in from that machine, empty for this one.
    void OnLogin(const std::string& host);

  private:
    struct Place {
        std::string name;  // for people
        bool local = false;
        SocketAddress address = {};
        platform::Descriptor socket{-1};
        platform::Descriptor dial{-1};  // that has not been answered
        std::string dialledFrom = {};
        std::uint64_t answeredBy = 0;  // the round of the thread
        bool isGone = false;           // told
    };
    struct Connection {
        std::uint64_t inode = 0;  // tells whether the descriptor is still this connection
        std::string from;         // as Visitors counts
        Peer peer;
        bool local = false;
        bool called = false;
        int takenBack = 0;  // calls, since m_counted
    };
    enum class Event { Crowd, CrowdOfOne, Lack, Silence, Flood };
    using Events = std::map<std::pair<Event, std::string>, int>;  // with whom, how often
    struct EventRow {
        Event event;
        const char* text;  // takes with whom, if that is known, and how often
    };
    static const EventRow kEventRows[];

    bool ListenTo(Place place, std::string& error);
    void StartThread();
    void Run();
    void Wake();
    std::vector<pollfd> Watched();
    // False when the system has no means to go on at the moment.
    bool AcceptSome(int socket);
    bool IsAdmitted(int socket, const platform::Descriptor& client, const SocketAddress& address,
                    bool& local);
    bool HasRoom(const Connection& connection);
    bool RefuseOne(int socket);
    void Note(Event event, const std::string& from);
    std::vector<int> Descriptors() const;
    void ForgetGone();
    void ForgetIfGone(int descriptor);
    void CutFloods();
    bool Answers(Place& place);
    bool Remake(Place& place, std::vector<platform::Notice>& notices);

    const ListenerSettings m_settings;
    Take m_take;
    int m_tcpPort = 0;
    platform::Descriptor m_wake{-1};
    platform::Descriptor m_reserve{-1};
    std::thread m_thread;
    std::atomic<bool> m_stopped = false;
    std::atomic<std::uint64_t> m_rounds = 0;  // of the thread through all that it does
    std::int64_t m_dialled = 0;
    std::int64_t m_searched = 0;  // for room, by the listener's thread

    std::mutex m_mutex;  // of all below
    std::vector<Place> m_places;
    std::map<int, Connection> m_connections;  // by their descriptors, which belong to the library
    std::unordered_map<std::string, int> m_byPlace;
    Visitors m_visitors;
    int m_descriptorLimit = 0;
    std::int64_t m_now = 0;  // of the last Check
    std::int64_t m_counted = 0;
    bool m_looks = false;  // what has gone is to be looked for
    Events m_events;
};

}  // namespace kalvex::vantrel
