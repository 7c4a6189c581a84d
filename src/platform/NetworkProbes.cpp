#include "platform/NetworkProbes.h"

namespace kalvex::platform {

namespace {

class MissingProbes final : public NetworkProbes {
  public:
    std::thread StartThread(const ThreadIdentity&, std::function<void()>) override { return {}; }
    int Ping(const std::string&, std::uint32_t) override { return PingNoPermission; }
    std::unique_ptr<FtpSession> OpenFtpSession() override { return nullptr; }
    TcpOutcome ConnectTcp(const std::string&, std::uint16_t) override {
        return {TcpStep::Socket, std::string()};
    }
    void Pause(std::uint32_t) override {}
};

}  // namespace

NetworkProbes& NoProbes() {
    static MissingProbes probes;
    return probes;
}

}  // namespace kalvex::platform
