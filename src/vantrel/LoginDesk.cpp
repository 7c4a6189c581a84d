#include "vantrel/LoginDesk.h"

#include <utility>

#include "platform/PasswordHash.h"
#include "text/TextFormat.h"

namespace kalvex::vantrel {

namespace {

constexpr const char* kWrong = platform::Translatable("brak uprawnień");
constexpr const char* kTooOften =
    platform::Translatable("zbyt wiele nieudanych prób, następna możliwa za %d s");
constexpr const char* kOtherVersion = platform::Translatable("inna wersja protokołu");

bool IsNobody(const LoginRequest& request) {
    return request.password.empty() && (request.user.empty() || request.user == platform::kNobody);
}

}  // namespace

LoginDesk::LoginDesk(const platform::UserStore& users, const platform::Clock& clock,
                     const platform::Translator& translator, platform::MainLoop& loop,
                     platform::PasswordCost cost)
    : m_users(users), m_clock(clock), m_translator(translator), m_loop(loop), m_cost(cost) {}

LoginDesk::~LoginDesk() {
    *m_open = false;
    if (m_checker.joinable()) m_checker.join();
}

bool LoginDesk::Decide(const Pending& pending, LoginVerdict& verdict, std::string& hash) {
    const LoginRequest& request = pending.request;
    if (request.protocolVersion != kProtocolVersion) {
        verdict = {LoginOtherVersion, m_translator.Translate(kOtherVersion), {}};
        return true;
    }
    verdict = {LoginWrong, m_translator.Translate(kWrong), {}};
    if (request.user.size() > platform::kLongestUserName ||
        request.password.size() > platform::kLongestPassword) {
        return true;
    }
    const std::int64_t wait = m_gate.Wait(pending.address, request.user, m_clock.Elapsed());
    if (wait > 0) {
        verdict = {LoginTooOften,
                   text::FormatText(m_translator.Translate(kTooOften), {std::to_string(wait)}),
                   {}};
        return true;
    }
    if (IsNobody(request)) {
        const bool local = pending.address.empty();
        if (m_nobody == NobodyAccess::Always || (m_nobody == NobodyAccess::Local && local)) {
            verdict = {LoginOk, {}, {}};
            verdict.user.name = platform::kNobody;
        }
        return true;
    }
    const std::optional<platform::UserRecord> user = m_users.Find(request.user, &hash);
    if (user && platform::MayComeFrom(*user, pending.address)) {
        verdict.user = *user;
    } else {
        hash.clear();
    }
    return false;
}

LoginVerdict LoginDesk::Conclude(const Pending& pending, LoginVerdict verdict, bool right) {
    if (right && !verdict.user.name.empty()) {
        m_gate.OnSuccess(pending.address, pending.request.user);
        return {LoginOk, {}, std::move(verdict.user)};
    }
    m_gate.OnFailure(pending.address, pending.request.user, m_clock.Elapsed());
    verdict.user = {};
    return verdict;
}

void LoginDesk::Check(LoginRequest request, std::string address, Done done) {
    m_pending.push_back({std::move(request), std::move(address), std::move(done)});
    Next();
}

void LoginDesk::Next() {
    while (!m_checking && !m_pending.empty()) {
        auto pending = std::make_shared<Pending>(std::move(m_pending.front()));
        m_pending.pop_front();
        LoginVerdict verdict;
        std::string hash;
        if (Decide(*pending, verdict, hash)) {
            pending->done(verdict);
            continue;
        }
        m_checking = true;
        if (m_checker.joinable()) m_checker.join();
        m_checker = std::thread([this, open = m_open, pending, verdict, hash, cost = m_cost] {
            const std::string_view password = pending->request.password.View();
            const bool right = !hash.empty() && platform::CheckPassword(hash, password);
            // Takes as long as a check.
            if (hash.empty()) platform::HashPassword(password, cost);
            m_loop.Post([this, open, pending, verdict, right] {
                pending->request.password = {};
                if (!*open) return;
                m_checking = false;
                pending->done(Conclude(*pending, verdict, right));
                Next();
            });
        });
    }
}

}  // namespace kalvex::vantrel
