#include "server/Store.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "text/CodePage.h"

namespace kalvex::server {

namespace {

// What one transaction takes on before it is committed.
constexpr std::size_t kBatchOperations = 20000;

}  // namespace

bool Store::Open(const std::string& path, platform::Notice& error) {
    if (!m_writeFile.Open(path, error) || !m_readFile.Open(path, error)) return false;
    if (!m_writeFile.ReadContents(m_contents)) {
        error = {"%s", {text::ToUtf8(m_writeFile.ErrorText())}};
        return false;
    }
    for (const auto& [name, id] : m_contents.variables) {
        m_lastVariable = std::max(m_lastVariable, id);
    }
    m_writer = std::thread([this] { Write(); });
    m_reader = std::thread([this] { ReadPieces(); });
    return true;
}

void Store::Close() {
    *m_open = false;
    if (!m_writer.joinable()) return;
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
        m_background.clear();
        m_reads.clear();
    }
    m_work.notify_all();
    m_writer.join();
    m_reader.join();
}

VariableId Store::Register(std::string_view name) {
    const auto [known, isNew] = m_contents.variables.emplace(name, m_lastVariable + 1);
    if (isNew) {
        ++m_lastVariable;
        const std::lock_guard lock(m_mutex);
        m_names.push_back({known->second, known->first});
    }
    return known->second;
}

std::optional<value::CVal> Store::LastValue(VariableId variable) const {
    const auto found = m_contents.lastValues.find(variable);
    if (found == m_contents.lastValues.end()) return std::nullopt;
    return found->second;
}

std::optional<std::int64_t> Store::Progress(const std::string& what) const {
    const auto found = m_contents.progress.find(what);
    if (found == m_contents.progress.end()) return std::nullopt;
    return found->second;
}

bool Store::Submit(std::vector<StoreOperation> operations, Urgency urgency, Done done) {
    {
        const std::lock_guard lock(m_mutex);
        const bool urgent = urgency == Urgency::Now;
        std::size_t& waiting = urgent ? m_urgentWaiting : m_backgroundWaiting;
        if (waiting + operations.size() > (urgent ? kMostUrgent : kMostBackground)) return false;
        waiting += operations.size();
        if (urgent) ++m_urgentMade;
        (urgent ? m_urgent : m_background)
            .push_back({std::move(operations), std::move(done), urgent});
    }
    m_work.notify_all();
    return true;
}

void Store::Read(const StoreQuery& query, std::function<void(StorePiece)> done) {
    {
        const std::lock_guard lock(m_mutex);
        m_reads.push_back({query, std::move(done), m_urgentMade});
    }
    m_work.notify_all();
}

void Store::Flush() {
    std::unique_lock lock(m_mutex);
    m_done.wait(lock, [this] {
        return m_urgent.empty() && m_background.empty() && m_reads.empty() && !m_writing &&
               !m_reading;
    });
}

std::vector<Store::Submission> Store::NextBatch() {
    std::vector<Submission> batch;
    std::size_t operations = 0;
    while (!m_urgent.empty() && operations < kBatchOperations) {
        operations += m_urgent.front().operations.size();
        batch.push_back(std::move(m_urgent.front()));
        m_urgent.pop_front();
    }
    if (!m_background.empty()) {
        batch.push_back(std::move(m_background.front()));
        m_background.pop_front();
    }
    return batch;
}

void Store::Write() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_work.wait(lock, [this] { return m_stop || !m_urgent.empty() || !m_background.empty(); });
        if (m_urgent.empty() && m_background.empty()) return;
        std::vector<Submission> batch = NextBatch();
        std::vector<SaveName> names = std::exchange(m_names, {});
        m_writing = true;
        lock.unlock();
        if (Commit(batch, names)) names.clear();
        lock.lock();
        m_names.insert(m_names.begin(), names.begin(), names.end());
        m_writing = false;
        for (const Submission& submission : batch) {
            (submission.urgent ? m_urgentWaiting : m_backgroundWaiting) -=
                submission.operations.size();
            if (submission.urgent) ++m_urgentDone;
        }
        m_done.notify_all();
        m_work.notify_all();
    }
}

void Store::PostDone(std::function<void()> done) {
    m_loop.Post([open = m_open, done = std::move(done)] {
        if (*open) done();
    });
}

bool Store::Commit(std::vector<Submission>& batch, const std::vector<SaveName>& names) {
    auto outcomes = std::make_shared<std::vector<std::pair<Done, StoreOutcome>>>();
    bool committed = false;
    std::string error;
    {
        platform::SqliteTransaction transaction(m_writeFile.Database());
        committed = transaction.Begun();
        ChangedReports none;
        for (const SaveName& name : names) {
            committed = committed && m_writeFile.Apply(name, none);
        }
        for (Submission& submission : batch) {
            StoreOutcome outcome;
            for (const StoreOperation& operation : submission.operations) {
                committed = committed && m_writeFile.Apply(operation, outcome.changed);
            }
            committed = committed && m_writeFile.Number(outcome.changed, outcome.firstChange);
            outcomes->emplace_back(std::move(submission.done), std::move(outcome));
        }
        committed = committed && transaction.Commit();
        if (!committed) error = m_writeFile.ErrorText();
    }
    for (auto& [done, outcome] : *outcomes) {
        outcome.committed = committed;
        outcome.error = error;
        if (!committed) outcome.changed.clear();
    }
    std::erase_if(*outcomes, [](const auto& entry) { return !entry.first; });
    if (!outcomes->empty()) {
        PostDone([outcomes] {
            for (const auto& [done, outcome] : *outcomes) done(outcome);
        });
    }
    return committed;
}

void Store::ReadPieces() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_work.wait(lock, [this] {
            return m_stop || (!m_reads.empty() && m_urgentDone >= m_reads.front().after);
        });
        if (m_stop) return;
        ReadJob job = std::move(m_reads.front());
        m_reads.pop_front();
        m_reading = true;
        lock.unlock();

        auto piece = std::make_shared<StorePiece>();
        const StoreQuery& query = job.query;
        piece->read = m_readFile.ReadRange(query.variable, query.kind, query.from, query.to,
                                           query.limit + 1, piece->values);
        if (!piece->read) piece->values.clear();
        if (piece->values.size() > static_cast<std::size_t>(query.limit)) {
            piece->values.pop_back();
            piece->more = true;
        }
        PostDone([piece, done = std::move(job.done)] { done(std::move(*piece)); });

        lock.lock();
        m_reading = false;
        m_done.notify_all();
    }
}

}  // namespace kalvex::server
