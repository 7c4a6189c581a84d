// What a client hears of its transport, kept as text.
#pragma once

#include <string>
#include <vector>

#include "vantrel/Transport.h"

namespace kalvex::support {

std::string Describe(const vantrel::ServerMessage& message);

class HeardEvents final : public vantrel::ClientTransportEvents {
  public:
    void OnOpened() override { heard.push_back("opened"); }
    void OnMessage(vantrel::ServerMessage message) override { heard.push_back(Describe(message)); }
    void OnFault(vantrel::ConnectionFault fault, std::uint32_t reason) override;
    void OnClosed(std::uint32_t reason) override;

    bool Has(const std::string& event) const;

    std::vector<std::string> heard;
};

}  // namespace kalvex::support
