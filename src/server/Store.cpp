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
        m_nLastVariable = std::max(m_nLastVariable, id);
    }
    m_writer = std::thread([this] { Write(); });
    m_reader = std::thread([this] { ReadPieces(); });
    return true;
}

void Store::Close() {
    *m_pOpen = false;
    if (!m_writer.joinable()) return;
    {
        const std::lock_guard lock(m_mutex);
        m_fStop = true;
        m_arrBackground.clear();
        m_arrReads.clear();
    }
    m_work.notify_all();
    m_writer.join();
    m_reader.join();
}

VariableId Store::Register(std::string_view name) {
    const auto [known, isNew] = m_contents.variables.emplace(name, m_nLastVariable + 1);
    if (isNew) {
        ++m_nLastVariable;
        const std::lock_guard lock(m_mutex);
        m_arrNames.push_back({known->second, known->first});
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
        std::size_t& waiting = urgent ? m_nUrgentWaiting : m_nBackgroundWaiting;
        if (waiting + operations.size() > (urgent ? kMostUrgent : kMostBackground)) return false;
        waiting += operations.size();
        if (urgent) ++m_nUrgentMade;
        (urgent ? m_arrUrgent : m_arrBackground)
            .push_back({std::move(operations), std::move(done), urgent});
    }
    m_work.notify_all();
    return true;
}

void Store::Read(const StoreQuery& query, std::function<void(StorePiece)> done) {
    {
        const std::lock_guard lock(m_mutex);
        m_arrReads.push_back({query, std::move(done), m_nUrgentMade});
    }
    m_work.notify_all();
}

void Store::Flush() {
    std::unique_lock lock(m_mutex);
    m_done.wait(lock, [this] {
        return m_arrUrgent.empty() && m_arrBackground.empty() && m_arrReads.empty() &&
               !m_fWriting && !m_fReading;
    });
}

std::vector<Store::Submission> Store::NextBatch() {
    std::vector<Submission> batch;
    std::size_t operations = 0;
    while (!m_arrUrgent.empty() && operations < kBatchOperations) {
        operations += m_arrUrgent.front().operations.size();
        batch.push_back(std::move(m_arrUrgent.front()));
        m_arrUrgent.pop_front();
    }
    if (!m_arrBackground.empty()) {
        batch.push_back(std::move(m_arrBackground.front()));
        m_arrBackground.pop_front();
    }
    return batch;
}

void Store::Write() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_work.wait(lock,
                    [this] { return m_fStop || !m_arrUrgent.empty() || !m_arrBackground.empty(); });
        if (m_arrUrgent.empty() && m_arrBackground.empty()) return;
        std::vector<Submission> batch = NextBatch();
        std::vector<SaveName> names = std::exchange(m_arrNames, {});
        m_fWriting = true;
        lock.unlock();
        if (Commit(batch, names)) names.clear();
        lock.lock();
        m_arrNames.insert(m_arrNames.begin(), names.begin(), names.end());
        m_fWriting = false;
        for (const Submission& submission : batch) {
            (submission.urgent ? m_nUrgentWaiting : m_nBackgroundWaiting) -=
                submission.operations.size();
            if (submission.urgent) ++m_nUrgentDone;
        }
        m_done.notify_all();
        m_work.notify_all();
    }
}

void Store::PostDone(std::function<void()> done) {
    m_loop.Post([open = m_pOpen, done = std::move(done)] {
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
            return m_fStop || (!m_arrReads.empty() && m_nUrgentDone >= m_arrReads.front().after);
        });
        if (m_fStop) return;
        ReadJob job = std::move(m_arrReads.front());
        m_arrReads.pop_front();
        m_fReading = true;
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
        m_fReading = false;
        m_done.notify_all();
    }
}

}  // namespace kalvex::server
