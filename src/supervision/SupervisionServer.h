// Answers the questions of kalvex.proto about a module. Main thread, but for what the network
// calls.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/Supervision.h"
#include "platform/MainLoop.h"
#include "supervision/SupervisionParcels.h"
#include "vantrel/network/FurtherMethods.h"

namespace kalvex::supervision {

// What a module says of itself, and the parcel of each script; made once for all who look at it in
// one turn of the loop.
class StatusView {
  public:
    struct Content {
        app::ModuleStatus status;
        std::vector<std::string> parcels;  // one a script
    };

    StatusView(app::Supervised& module, platform::MainLoop& loop)
        : m_module(module), m_loop(loop) {}

    const Content& Get();

  private:
    app::Supervised& m_module;
    platform::MainLoop& m_loop;
    const std::shared_ptr<std::optional<Content>> m_content =
        std::make_shared<std::optional<Content>>();
};

// Of audit trails that are read at one time.
inline constexpr int kMostReaders = 4;

class SupervisionServer final : public vantrel::FurtherMethods {
  public:
    // Both outlive the server, and its calls do not.
    SupervisionServer(app::Supervised& module, platform::MainLoop& loop)
        : m_module(module), m_loop(loop), m_view(module, loop) {}

    std::optional<std::size_t> Find(std::string_view name) const override;
    std::unique_ptr<vantrel::FurtherCall> Accept(std::size_t method,
                                                 vantrel::FurtherLink& link) override;

  private:
    app::Supervised& m_module;
    platform::MainLoop& m_loop;
    StatusView m_view;
    int m_readers = 0;
};

}  // namespace kalvex::supervision
