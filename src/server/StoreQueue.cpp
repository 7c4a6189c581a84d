#include "server/StoreQueue.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <variant>

namespace kalvex::server {

namespace {

constexpr std::size_t kBatchOperations = 20000;

std::size_t TextBytes(const value::CVal& value) {
    return value.IsText() ? value.Text().size() : 0;
}

std::size_t TextBytes(const SaveName& operation) {
    return operation.name.size();
}

std::size_t TextBytes(const SaveProgress& operation) {
    return operation.what.size();
}

// With what stands beside it: the order that waits for it, and its place among the answers.
std::size_t TextBytes(const SaveAnswer& operation) {
    constexpr std::size_t kOrder = 500;
    return kOrder + 3 * operation.token.size();
}

std::size_t TextBytes(const DropAnswers& operation) {
    return operation.token.size();
}

template <class Operation>
std::size_t TextBytes(const Operation& operation) {
    if constexpr (requires { operation.value; }) {
        return TextBytes(operation.value);
    } else {
        return 0;
    }
}

std::size_t BytesOf(const std::vector<StoreOperation>& operations) {
    std::size_t bytes = operations.size() * sizeof(StoreOperation);
    for (const StoreOperation& operation : operations) {
        bytes += std::visit([](const auto& known) { return TextBytes(known); }, operation);
    }
    return bytes;
}

// Of a submission that is written in pieces.
void Join(StoreOutcome& piece, StoreOutcome& whole) {
    for (const auto& [period, sequence] : piece.changed) whole.changed[period] = sequence;
    std::ranges::move(piece.kept, std::back_inserter(whole.kept));
    whole.lateLeft = piece.lateLeft;
    whole.marked = std::min(whole.marked, piece.marked);
    whole.hoursLeft = piece.hoursLeft;
}

}  // namespace

bool StoreQueue::HasRoom(StoreUrgency urgency) const {
    return urgency == StoreUrgency::Now ? m_urgent.bytes < m_limits.urgent
                                        : m_background.bytes < m_limits.background;
}

void StoreQueue::Push(std::vector<StoreOperation> operations, StoreUrgency urgency, Done done) {
    const bool urgent = urgency == StoreUrgency::Now;
    if (urgent) ++m_urgentMade;
    Lane& lane = urgent ? m_urgent : m_background;
    Submission& submission = lane.waiting.emplace_back();
    submission.bytes = sizeof(Submission) + BytesOf(operations);
    submission.operations = std::move(operations);
    submission.done = std::move(done);
    submission.after = m_urgentMade;
    lane.bytes += submission.bytes;
}

std::size_t StoreQueue::Operations() const {
    std::size_t count = 0;
    for (const Lane* lane : {&m_urgent, &m_background}) {
        for (const Submission& submission : lane->waiting) {
            count += submission.operations.size() - submission.written;
        }
    }
    return count;
}

// False when it does not go into the batch to its end.
bool StoreQueue::Add(Submission& submission, std::size_t& room, StoreBatch& batch) {
    const std::size_t left = submission.operations.size() - submission.written;
    const bool cut = left > room;
    if (cut && (submission.operations.size() <= kBatchOperations || room == 0)) return false;
    const std::span<const StoreOperation> all = submission.operations;
    const auto part = all.subspan(submission.written, std::min(left, room));
    batch.parts.push_back(part);
    room -= part.size();
    return !cut;
}

StoreBatch StoreQueue::Next() {
    StoreBatch batch;
    std::size_t room = kBatchOperations;
    const std::size_t names = std::min(m_names.size(), room);
    std::copy_n(m_names.begin(), names, std::back_inserter(batch.names));
    room -= names;

    std::uint64_t written = m_urgentWritten;
    bool whole = true;
    for (auto next = m_urgent.waiting.begin(); whole && next != m_urgent.waiting.end(); ++next) {
        whole = Add(*next, room, batch);
        if (whole) ++written;
    }
    m_urgent.taken = batch.parts.size();
    if (!m_background.waiting.empty() && m_background.waiting.front().after <= written) {
        Add(m_background.waiting.front(), room, batch);
    }
    m_background.taken = batch.parts.size() - m_urgent.taken;
    return batch;
}

std::vector<StoreQueue::Finished> StoreQueue::Take(const StoreBatch& batch,
                                                   std::vector<StoreOutcome> outcomes) {
    m_names.erase(m_names.begin(),
                  m_names.begin() + static_cast<std::ptrdiff_t>(batch.names.size()));
    std::vector<Finished> finished;
    const std::size_t urgentParts = m_urgent.taken;
    m_urgentWritten += TakeFrom(m_urgent, batch, 0, outcomes, finished);
    TakeFrom(m_background, batch, urgentParts, outcomes, finished);
    return finished;
}

std::size_t StoreQueue::TakeFrom(Lane& lane, const StoreBatch& batch, std::size_t part,
                                 std::vector<StoreOutcome>& outcomes,
                                 std::vector<Finished>& finished) {
    std::size_t ended = 0;
    for (std::size_t left = std::exchange(lane.taken, 0); left > 0; --left, ++part) {
        Submission& submission = lane.waiting.front();
        submission.written += batch.parts[part].size();
        Join(outcomes[part], submission.outcome);
        if (submission.written < submission.operations.size()) continue;
        lane.bytes -= submission.bytes;
        finished.push_back({std::move(submission.done), std::move(submission.outcome)});
        lane.waiting.pop_front();
        ++ended;
    }
    return ended;
}

void StoreQueue::DropBackground() {
    m_background.waiting.clear();
    m_background.bytes = 0;
}

}  // namespace kalvex::server
