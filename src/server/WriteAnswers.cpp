#include "server/WriteAnswers.h"

#include <utility>

namespace kalvex::server {

void WriteAnswers::Load(const std::vector<SaveAnswer>& kept) {
    for (const SaveAnswer& answer : kept) {
        auto& client = *m_clients.try_emplace(answer.token).first;
        client.second.answers[answer.serial].result = answer.result;
        Add(client, answer.serial, answer.number);
    }
}

void WriteAnswers::Add(Clients::value_type& client, std::uint64_t serial, std::int64_t number) {
    auto& [token, record] = client;
    m_byUse.erase(record.lastNumber);
    m_byUse.emplace(number, token);
    record.lastNumber = m_lastNumber = number;
    record.kept.push_back(serial);
    ++m_kept;
}

WriteAnswers::Meeting WriteAnswers::Meet(const std::string& token, std::uint64_t serial,
                                         Waiter waiter) {
    const auto [found, isNew] = m_clients[token].answers.try_emplace(serial);
    Answer& answer = found->second;
    if (!answer.result) {
        // A token is of one process, which has left its former conversations.
        std::erase_if(answer.waiters,
                      [&](const Waiter& former) { return former.session != waiter.session; });
        answer.waiters.push_back(waiter);
    }
    return {isNew, answer.result};
}

void WriteAnswers::Keep(const std::string& token, std::uint64_t serial, std::uint16_t result,
                        std::vector<StoreOperation>& operations) {
    auto& client = *m_clients.find(token);
    Add(client, serial, m_lastNumber + 1);
    operations.emplace_back(SaveAnswer{token, serial, m_lastNumber, result});
    if (client.second.kept.size() > kMostOfToken) DropOldest(client, operations);
    if (m_kept > kMost) DropToken(m_byUse.begin()->second, operations);
}

void WriteAnswers::DropOldest(Clients::value_type& client,
                              std::vector<StoreOperation>& operations) {
    auto& [token, record] = client;
    operations.emplace_back(DropAnswers{token, record.kept.front()});
    Forget(record, record.kept.front());
    record.kept.pop_front();
    --m_kept;
}

void WriteAnswers::DropToken(const std::string& token, std::vector<StoreOperation>& operations) {
    const auto found = m_clients.find(token);
    Client& client = found->second;
    operations.emplace_back(DropAnswers{token, 0});
    for (const std::uint64_t serial : client.kept) Forget(client, serial);
    m_kept -= client.kept.size();
    client.kept.clear();
    m_byUse.erase(client.lastNumber);
    if (client.answers.empty()) m_clients.erase(found);
}

void WriteAnswers::Forget(Client& client, std::uint64_t serial) {
    const auto found = client.answers.find(serial);
    if (found->second.result) {
        client.answers.erase(found);
    } else {
        found->second.dropped = true;
    }
}

void WriteAnswers::Abandon(const std::string& token, std::uint64_t serial) {
    const auto client = m_clients.find(token);
    client->second.answers.erase(serial);
    if (client->second.answers.empty()) m_clients.erase(client);
}

std::vector<WriteAnswers::Waiter> WriteAnswers::Settle(const std::string& token,
                                                       std::uint64_t serial, std::uint16_t result) {
    const auto client = m_clients.find(token);
    const auto found = client->second.answers.find(serial);
    Answer& answer = found->second;
    answer.result = result;
    std::vector<Waiter> waiters = std::exchange(answer.waiters, {});
    if (answer.dropped) client->second.answers.erase(found);
    if (client->second.answers.empty()) m_clients.erase(client);
    return waiters;
}

}  // namespace kalvex::server
