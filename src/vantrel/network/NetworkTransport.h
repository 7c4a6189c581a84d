// A client's conversation with one server over a network. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vantrel/network/ListReception.h"
#include "vantrel/network/NetworkClient.h"
#include "vantrel/network/Reception.h"

namespace kalvex::vantrel {

class NetworkTransport final : public ClientTransport, private ReceptionListener<ServerParcel> {
  public:
    NetworkTransport(NetworkClient& client, std::string_view source, Endpoint endpoint,
                     ClientTransportEvents& events);
    ~NetworkTransport() override;
    NetworkTransport(const NetworkTransport&) = delete;
    NetworkTransport& operator=(const NetworkTransport&) = delete;

    bool Open() override;
    void Send(ClientMessage message) override;
    void Close(std::uint32_t reason) override;
    bool LoadVariableList(const LoginRequest& login,
                          std::vector<VariableDefinition>& list) override;
    void AskVariableList(const LoginRequest& login, ListTaker done) override;

    // The client's periodic work on it: attempts to open anew, signs of life.
    void KeepUp();

  private:
    enum class State { Resting, Waiting, Opening, Open };

    struct AskedList {
        std::shared_ptr<Stream> stream;
        std::shared_ptr<ListReception> reception;
        ListTaker done;
        std::int64_t until;  // milliseconds of the client's clock
    };

    void OnParcel(ServerParcel parcel) override;
    void OnWireFault(WireFault fault) override;
    void OnEnded(StreamEnd end, const std::string& detail) override;

    std::shared_ptr<Stream> DialForList(const LoginRequest& login,
                                        const std::shared_ptr<ListReception>& reception);
    void FinishList(std::uint64_t number);
    void Attempt();
    // The conversation is gone, or an attempt has failed; there will be another one.
    void Break(std::uint32_t reason);
    // Takes the stream away: nothing comes in any more.
    std::shared_ptr<Stream> TakeStream();
    // Delivered after the call that brings it about.
    void Tell(std::function<void(ClientTransportEvents&)> event);
    // Why an attempt has failed.
    void TellFault(StreamEnd end, const std::string& detail);
    // The source with a reason, which is UTF-8.
    void Log(const char* polish, const std::string& detail, int level);
    // False: the log has had this last.
    bool Log(const platform::Notice& notice, int level);

    NetworkClient& m_client;
    const std::string m_source;  // UTF-8
    const Endpoint m_endpoint;
    ClientTransportEvents& m_events;
    State m_state = State::Resting;
    std::shared_ptr<Stream> m_stream;  // while opening or open
    std::shared_ptr<Reception<ServerParcel>> m_reception;
    std::shared_ptr<HandOver> m_ownEvents;
    PeerWatch m_watch{0};
    bool m_spoke = false;
    RetryPause m_pause;
    std::int64_t m_nextAttempt = 0;
    std::map<std::uint64_t, AskedList> m_askedLists;  // by numbers that ascend
    std::uint64_t m_lastAskedList = 0;
    std::string m_lastLine;  // of the log, which is told each once
    bool m_away = false;     // an attempt has failed, or a conversation broke, since the last one
};

}  // namespace kalvex::vantrel
