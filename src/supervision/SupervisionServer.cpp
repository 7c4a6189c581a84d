#include "supervision/SupervisionServer.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "supervision/AuditReader.h"
#include "text/CodePage.h"

namespace kalvex::supervision {

namespace {

using vantrel::StreamEnd;

// Looks, one a second, after which a client hears that there is nothing to tell.
constexpr int kSignAfter = 10;

struct Ground {
    app::Supervised& module;
    platform::MainLoop& loop;
    StatusView& view;
    int& readers;
};

// One call: the question, its admission, the answer.
class Call : public vantrel::FurtherCall {
  public:
    Call(const Ground& ground, vantrel::FurtherLink& link) : m_ground(ground), m_link(link) {}

    void OnParcel(std::string_view bytes) final {
        if (std::exchange(m_asked, true)) return;
        if (!Unpack(bytes, m_question)) return m_link.Finish(StreamEnd::NotAQuestion, {});
        vantrel::LoginRequest login;
        login.user = m_question.user;
        login.password = std::move(m_question.password);
        login.clientName = m_question.clientName;
        m_ground.module.Admit(std::move(login), m_link.PeerAddress(), m_self,
                              [weak = std::weak_ptr(m_self)](const app::Admission& admission) {
                                  if (const auto self = weak.lock())
                                      (*self)->OnAdmission(admission);
                              });
    }

  protected:
    virtual void Answer() = 0;
    void Finish() { m_link.Finish(StreamEnd::Orderly, {}); }

    const Ground m_ground;
    vantrel::FurtherLink& m_link;
    Question m_question;

  private:
    void OnAdmission(const app::Admission& admission) {
        if (admission.outcome == app::Admission::Admitted) return Answer();
        const bool refused = admission.outcome == app::Admission::LoginRefused;
        m_link.Finish(refused ? StreamEnd::LoginRefused : StreamEnd::Refused,
                      text::ToUtf8(admission.reason));
    }

    bool m_asked = false;
    const std::shared_ptr<Call*> m_self = std::make_shared<Call*>(this);
};

class StatusCall final : public Call {
  public:
    using Call::Call;

  private:
    void Answer() override {
        const StatusPiece piece{m_ground.view.Get().status, {}, true};
        for (std::string& parcel : Pack(piece)) m_link.Send(std::move(parcel));
        Finish();
    }
};

// Sends what has changed since what it sent last, and nothing while the client has not taken that.
class WatchCall final : public Call {
  public:
    using Call::Call;

    void Check() override {
        if (!m_begun || m_link.Backlog() > 0) return;
        StatusPiece changes = TakeChanges();
        const int level = std::exchange(m_level, changes.status.logLevel);
        const bool isEmpty =
            changes.status.scripts.empty() && changes.closed.empty() && m_level == level;
        m_mute = isEmpty ? m_mute + 1 : 0;
        if (isEmpty && m_mute < kSignAfter) return;
        m_mute = 0;
        Send(changes);
    }

  private:
    void Answer() override {
        m_begun = true;
        StatusPiece all = TakeChanges();
        m_level = all.status.logLevel;
        all.complete = true;
        Send(all);
    }

    void Send(const StatusPiece& piece) {
        for (std::string& parcel : Pack(piece)) m_link.Send(std::move(parcel));
    }

    // A script is as it was when it would be told in the same bytes.
    StatusPiece TakeChanges() {
        const StatusView::Content& now = m_ground.view.Get();
        StatusPiece changes{
            {now.status.module, now.status.identity, now.status.logLevel, {}}, {}, false};
        std::map<std::string, std::string> told;
        for (std::size_t i = 0; i < now.parcels.size(); ++i) {
            const app::ScriptStatus& script = now.status.scripts[i];
            const auto before = m_told.find(script.path);
            if (before == m_told.end() || before->second != now.parcels[i]) {
                changes.status.scripts.push_back(script);
            }
            told.emplace(script.path, now.parcels[i]);
        }
        for (const auto& [path, parcel] : m_told) {
            if (told.count(path) == 0) changes.closed.push_back(path);
        }
        m_told = std::move(told);
        return changes;
    }

    std::map<std::string, std::string> m_told;  // by path
    int m_level = 0;
    int m_mute = 0;
    bool m_begun = false;
};

// The answer of an operation about a script, which gives nothing when the script is not open.
template <auto Get>
class ScriptCall final : public Call {
  public:
    using Call::Call;

  private:
    void Answer() override {
        const auto answer = (m_ground.module.*Get)(m_question.script);
        if (!answer) return m_link.Finish(StreamEnd::NotFound, {});
        m_link.Send(Pack(*answer));
        Finish();
    }
};

class AuditCall final : public Call {
  public:
    using Call::Call;
    ~AuditCall() override {
        if (m_reader) --m_ground.readers;
    }

    void OnDrained() override {
        if (m_reader) m_reader->TakeNext();
    }

  private:
    void Answer() override {
        if (m_ground.readers >= kMostReaders) return m_link.Finish(StreamEnd::TooLarge, {});
        ++m_ground.readers;
        m_reader.emplace(m_ground.module.GetAuditFiles(), m_question.since, m_question.script,
                         m_ground.loop,
                         [this](const AuditPiece& piece, bool last) { OnPiece(piece, last); });
    }

    void OnPiece(const AuditPiece& piece, bool last) {
        m_link.Send(Pack(piece));
        if (last) return Finish();
        if (m_link.Backlog() == 0) m_reader->TakeNext();
    }

    std::optional<AuditReader> m_reader;
};

template <class Answerer>
std::unique_ptr<vantrel::FurtherCall> Make(const Ground& ground, vantrel::FurtherLink& link) {
    return std::make_unique<Answerer>(ground, link);
}

using Maker = std::unique_ptr<vantrel::FurtherCall> (*)(const Ground&, vantrel::FurtherLink&);

// In the order of Method.
constexpr Maker kMakers[] = {Make<StatusCall>, Make<WatchCall>,
                             Make<ScriptCall<&app::Supervised::GetBreakpoints>>,
                             Make<ScriptCall<&app::Supervised::GetStanding>>, Make<AuditCall>};
static_assert(std::size(kMakers) == kMethodNames.size());

}  // namespace

const StatusView::Content& StatusView::Get() {
    if (*m_content) return **m_content;
    Content& content = m_content->emplace(Content{m_module.GetStatus(), {}});
    for (const app::ScriptStatus& script : content.status.scripts) {
        StatusPiece one;
        one.status.scripts.push_back(script);
        content.parcels.push_back(Pack(one).front());
    }
    m_loop.Post([weak = std::weak_ptr(m_content)] {
        if (const auto kept = weak.lock()) kept->reset();
    });
    return content;
}

std::optional<std::size_t> SupervisionServer::Find(std::string_view name) const {
    const auto* found = std::ranges::find(kMethodNames, name);
    if (found == kMethodNames.end()) return {};
    return static_cast<std::size_t>(found - kMethodNames.begin());
}

std::unique_ptr<vantrel::FurtherCall> SupervisionServer::Accept(std::size_t method,
                                                                vantrel::FurtherLink& link) {
    return kMakers[method]({m_module, m_loop, m_view, m_readers}, link);
}

}  // namespace kalvex::supervision
