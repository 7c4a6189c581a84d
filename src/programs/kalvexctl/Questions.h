// Asking modules beside the conversation: endpoints, time-outs, and what a failure is called. Main
// thread.
#pragma once

#include <string>
#include <vector>

#include "programs/kalvexctl/Call.h"
#include "supervision/SupervisionClient.h"

namespace kalvex::kalvexctl {

// Questions that are asked side by side, each of one module.
class Questions {
  public:
    explicit Questions(Call& call);
    ~Questions();
    Questions(const Questions&) = delete;
    Questions& operator=(const Questions&) = delete;

    void Ask(const std::string& module, supervision::Method method, const std::string& script,
             std::int64_t since, supervision::Inquiry::Piece piece);

    // Until all have been answered, or each has had its time since something came last; the first
    // thing that went wrong, in the order of asking.
    MaybeEnding Await();

    // Of the question of that number: nothing when it has been answered.
    MaybeEnding GetEnding(std::size_t number) const;
    bool IsSilent(std::size_t number) const;

  private:
    struct Asked;

    bool IsOver() const;

    Call& m_call;
    vantrel::ClientCarrier m_carrier;
    std::vector<std::unique_ptr<Asked>> m_asked;
    std::int64_t m_due = 0;
};

}  // namespace kalvex::kalvexctl
