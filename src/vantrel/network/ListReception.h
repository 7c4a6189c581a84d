// Gathers the list of variables that a server sends.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantrel/network/Parcel.h"
#include "vantrel/network/Stream.h"

namespace kalvex::vantrel {

class ListReception final : public StreamEvents {
  public:
    // `ended` is called on a thread of the carrier when nothing more comes.
    explicit ListReception(std::function<void()> ended = [] {}) : m_tellEnd(std::move(ended)) {}

    // False when within the time the whole list has not come. Any thread.
    bool Await(std::chrono::milliseconds patience, std::vector<VariableDefinition>& list);

    bool OnParcel(std::string_view bytes) override;
    void OnEnded(StreamEnd end, const std::string& detail) override;

  private:
    const std::function<void()> m_tellEnd;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<VariableDefinition> m_list;
    bool m_whole = false;
    bool m_ended = false;
    bool m_good = true;
};

}  // namespace kalvex::vantrel
