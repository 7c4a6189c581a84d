// What clients have been answered to writes that bear a serial, so that none is done twice, however
// often it is sent and over a restart. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "server/StoreFile.h"
#include "vantrel/Messages.h"

namespace kalvex::server {

class WriteAnswers {
  public:
    // Answers that are kept: the last ones of a token, and of all; beyond the latter the token goes
    // that has not written for longest.
    static constexpr std::size_t kMostOfToken = 1000;
    static constexpr std::size_t kMost = 200000;

    struct Waiter {
        std::uint64_t session = 0;
        vantrel::RequestId id = 0;
    };

    struct Meeting {
        bool isNew = false;                   // to be done, and under way from now on
        std::optional<std::uint16_t> result;  // of one that is not new; none: it is under way
    };

    // What the store has kept, by its numbers.
    void Load(const std::vector<SaveAnswer>& kept);

    // A write has come. Unless it has been answered, the waiter waits for it.
    Meeting Meet(const std::string& token, std::uint64_t serial, Waiter waiter);

    // Adds what keeps the answer in the store, to go with what the write does.
    void Keep(const std::string& token, std::uint64_t serial, std::uint16_t result,
              std::vector<StoreOperation>& operations);

    // A write that has just come is not done and may come again.
    void Abandon(const std::string& token, std::uint64_t serial);

    // A write has its answer: those who wait for it.
    std::vector<Waiter> Settle(const std::string& token, std::uint64_t serial,
                               std::uint16_t result);

  private:
    struct Answer {
        std::optional<std::uint16_t> result;
        std::vector<Waiter> waiters;
        bool dropped = false;  // while it was under way
    };

    struct Client {
        std::unordered_map<std::uint64_t, Answer> answers;
        std::deque<std::uint64_t> kept;  // serials, in the order of their numbers
        std::int64_t lastNumber = 0;
    };

    using Clients = std::unordered_map<std::string, Client>;

    void Add(Clients::value_type& client, std::uint64_t serial, std::int64_t number);
    void DropOldest(Clients::value_type& client, std::vector<StoreOperation>& operations);
    void DropToken(const std::string& token, std::vector<StoreOperation>& operations);
    void Forget(Client& client, std::uint64_t serial);

    Clients m_clients;
    std::map<std::int64_t, std::string> m_byUse;  // tokens by their last numbers
    std::int64_t m_lastNumber = 0;
    std::size_t m_kept = 0;
};

}  // namespace kalvex::server
