// The calls of further methods at a server. Main thread.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "platform/MainLoop.h"
#include "vantrel/network/FurtherMethods.h"
#include "vantrel/network/HandOver.h"
#include "vantrel/network/Patience.h"
#include "vantrel/network/ServerPort.h"

namespace kalvex::vantrel {

// Of calls at one time, and of the bytes that a client says in one of them.
inline constexpr std::size_t kMostFurtherCalls = 256;
inline constexpr std::size_t kMaxQuestionBytes = 64 << 10;

class FurtherCalls final : public FurtherPort {
  public:
    // Loop and methods outlive it.
    FurtherCalls(FurtherMethods& methods, platform::MainLoop& loop, SteadyClock clock);
    ~FurtherCalls() override;

    // Ends all calls; none comes any more. Before the port goes, which goes before this.
    void Close();
    // About once a second: ends calls whose client says nothing, or takes nothing.
    void Check();

    // ---- on the library's threads

    std::optional<std::size_t> Find(std::string_view name) const override {
        return m_methods.Find(name);
    }
    std::shared_ptr<StreamEvents> MakeEvents() override;
    void OnCaller(std::shared_ptr<Stream> stream, std::shared_ptr<StreamEvents> events,
                  std::size_t method, std::string address) override;

  private:
    class Call;
    class Events;

    void Admit(std::shared_ptr<Stream> stream, std::shared_ptr<Events> events, std::size_t method,
               std::string address);
    // After the present piece of work.
    void Retire(Call& call);

    FurtherMethods& m_methods;
    platform::MainLoop& m_loop;
    const SteadyClock m_clock;
    std::shared_ptr<HandOver> m_work;
    std::map<Call*, std::unique_ptr<Call>> m_calls;
};

}  // namespace kalvex::vantrel
