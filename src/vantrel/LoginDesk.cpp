#include "vantrel/LoginDesk.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/PasswordHash.h"
#include "text/TextFormat.h"

namespace kalvex::vantrel {

namespace {

// All programs of a machine may come at once.
constexpr std::size_t kMostOfGroup = 64;
constexpr std::size_t kMostInAll = 512;
constexpr std::size_t kMostOfBrake = 8;
constexpr std::size_t kMostDrawn = 64;
// More than may call from one address at a time, so that nobody else loses a place.
constexpr std::size_t kMostHeld = 4096;
constexpr std::int64_t kHeldFor = 4;  // seconds, as long as it is from turn to turn
constexpr int kMostFamiliarInARow = 4;

constexpr const char* kWrong = platform::Translatable("brak uprawnień");
constexpr const char* kTooOften =
    platform::Translatable("zbyt wiele nieudanych prób, następna możliwa za %d s");
constexpr const char* kOtherVersion = platform::Translatable("inna wersja protokołu");
constexpr const char* kFault = platform::Translatable("Nie można sprawdzić hasła (%s)");
constexpr const char* kNotNow = platform::Translatable("hasła nie można teraz sprawdzić");

bool IsNobody(const LoginRequest& request) {
    return request.password.empty() && (request.user.empty() || request.user == platform::kNobody);
}

}  // namespace

std::string LoginFaultLine(const LoginVerdict& verdict, const platform::Translator& translator) {
    return text::FormatText(translator.Translate(kFault), {verdict.fault});
}

LoginDesk::LoginDesk(const platform::UserStore& users, const platform::Clock& clock,
                     const platform::Translator& translator, platform::MainLoop& loop,
                     platform::PasswordCost cost)
    : m_users(users),
      m_clock(clock),
      m_translator(translator),
      m_loop(loop),
      m_cost(cost),
      m_familiar(kMostOfGroup, kMostInAll),
      m_strangers(kMostOfGroup, kMostInAll),
      m_held(kMostOfBrake, kMostHeld),
      m_drawn(kMostOfBrake, kMostDrawn) {}

LoginDesk::~LoginDesk() {
    *m_open = false;
    if (m_checker.joinable()) m_checker.join();
}

bool LoginDesk::KnowsProgram(const LoginRequest& request, std::string_view address) const {
    return m_known.KnowsToken(address, request.user, request.token, m_clock.Elapsed());
}

bool LoginDesk::KnowsAddress(std::string_view address) const {
    return m_known.KnowsAddress(address, m_clock.Elapsed());
}

LoginVerdict LoginDesk::NotNow(std::string fault) const {
    return {LoginNotNow, m_translator.Translate(kNotNow), {}, std::move(fault)};
}

LoginVerdict LoginDesk::TooOften(const std::string& brake) const {
    const std::int64_t wait = std::max<std::int64_t>(m_gate.Wait(brake, m_clock.Elapsed()), 1);
    return {LoginNotNow,
            text::FormatText(m_translator.Translate(kTooOften), {std::to_string(wait)}),
            {}};
}

bool LoginDesk::Decide(const PendingLogin& login, LoginVerdict& verdict) const {
    const LoginRequest& request = login.request;
    if (request.protocolVersion != kProtocolVersion) {
        verdict = {LoginOtherVersion, m_translator.Translate(kOtherVersion), {}};
        return true;
    }
    verdict = {LoginWrong, m_translator.Translate(kWrong), {}};
    if (request.user.size() > platform::kLongestUserName ||
        request.password.size() > platform::kLongestPassword) {
        return true;
    }
    if (!IsNobody(request)) return false;
    const bool local = login.address.empty();
    if (m_nobody == NobodyAccess::Always || (m_nobody == NobodyAccess::Local && local)) {
        verdict = {LoginOk, {}, {}};
        verdict.user.name = platform::kNobody;
    }
    return true;
}

void LoginDesk::Check(LoginRequest request, std::string address, std::weak_ptr<const void> asker,
                      Done done) {
    auto login = std::make_unique<PendingLogin>(PendingLogin{std::move(request), std::move(address),
                                                             std::move(asker), std::move(done),
                                                             m_clock.Elapsed()});
    LoginVerdict verdict;
    if (Decide(*login, verdict)) return Answer(*login, verdict);
    Enqueue(std::move(login));
    Next();
}

void LoginDesk::Answer(const PendingLogin& login, const LoginVerdict& verdict) {
    if (!login.asker.expired()) login.done(verdict);
}

void LoginDesk::Enqueue(PendingLoginPtr login) {
    const std::int64_t now = m_clock.Elapsed();
    const LoginRequest& request = login->request;
    std::string group = login->address;
    LoginQueue* queue = &m_strangers;
    if (m_known.KnowsUser(login->address, request.user, now)) {
        login->hasTurn = KnowsProgram(request, login->address);
        group = LoginGate::KeyOf(login->address, request.user);
        if (login->hasTurn) group += '\n' + request.token;
        queue = &m_familiar;
    }
    if (const PendingLoginPtr left = queue->Put(group, std::move(login))) Answer(*left, NotNow());
}

// Nobody overtakes those who wait for a turn that has come.
std::string LoginDesk::BrakeFor(const PendingLogin& login) {
    const std::int64_t now = m_clock.Elapsed();
    const std::string& user = login.request.user;
    const bool isKnown = m_known.KnowsUser(login.address, user, now);
    const std::string brake = m_gate.BrakeOn(login.address, user, isKnown, now);
    if (!brake.empty()) return brake;
    if (!isKnown && m_held.HasGroup(login.address)) return login.address;
    const std::string ofUser = LoginGate::KeyOf(login.address, user);
    return m_held.HasGroup(ofUser) ? ofUser : std::string();
}

bool LoginDesk::Hold(PendingLoginPtr& login) {
    if (login->hasTurn) return false;
    const std::string brake = BrakeFor(*login);
    if (brake.empty()) return false;
    const PendingLoginPtr left = m_held.Put(brake, std::move(login));
    if (left) Answer(*left, TooOften(brake));
    return true;
}

void LoginDesk::Step() {
    const std::int64_t now = m_clock.Elapsed();
    for (const std::string& brake : m_held.Groups()) {
        const std::string address = LoginGate::AddressOf(brake);
        if (!m_drawn.HasRoom(address) || !m_gate.TakeTurn(brake, now)) continue;
        PendingLoginPtr login = m_held.Draw(brake);
        if (!login) continue;
        login->hasTurn = true;
        m_drawn.Put(address, std::move(login));
    }
    for (const PendingLoginPtr& login : m_held.TakeOlder(now - kHeldFor + 1)) {
        Answer(*login, TooOften(BrakeFor(*login)));
    }
    Next();
}

PendingLoginPtr LoginDesk::TakeNext() {
    if (m_familiarInARow < kMostFamiliarInARow) {
        if (PendingLoginPtr login = m_familiar.Take()) {
            ++m_familiarInARow;
            return login;
        }
    }
    m_familiarInARow = 0;
    m_drawnNext = !m_drawnNext;
    for (LoginQueue* queue : {m_drawnNext ? &m_drawn : &m_strangers,
                              m_drawnNext ? &m_strangers : &m_drawn, &m_familiar}) {
        if (PendingLoginPtr login = queue->Take()) return login;
    }
    return nullptr;
}

void LoginDesk::Next() {
    while (!m_checking) {
        PendingLoginPtr login = TakeNext();
        if (!login) return;
        if (!Hold(login)) Begin(std::move(login));
    }
}

void LoginDesk::Begin(std::shared_ptr<PendingLogin> login) {
    m_checking = true;
    if (m_checker.joinable()) m_checker.join();
    try {
        m_checker = std::thread([this, open = m_open, login] {
            Finding finding = LookUp(*login);
            m_loop.Post([this, open, login, finding = std::move(finding)]() mutable {
                login->request.password = {};
                if (!*open) return;
                m_checking = false;
                Answer(*login, Conclude(*login, std::move(finding)));
                Next();
            });
        });
    } catch (const std::system_error& error) {
        m_checking = false;
        Answer(*login, NotNow(error.code().message()));
    }
}

LoginDesk::Finding LoginDesk::LookUp(const PendingLogin& login) const {
    const LoginRequest& request = login.request;
    Finding finding{m_users.FindAside(request.user)};
    const platform::UserFinding& user = finding.user;
    if (user.record && platform::MayComeFrom(*user.record, login.address)) {
        finding.isRight = platform::CheckPassword(user.hash, request.password.View());
    } else if (user.fault.empty()) {
        // Takes as long as a check.
        platform::HashPassword(request.password.View(), m_cost);
    }
    return finding;
}

LoginVerdict LoginDesk::Conclude(const PendingLogin& login, Finding finding) {
    if (!finding.user.fault.empty()) return NotNow(std::move(finding.user.fault));
    const LoginRequest& request = login.request;
    const std::int64_t now = m_clock.Elapsed();
    if (finding.isRight) {
        m_gate.OnSuccess(login.address, request.user);
        m_known.Note(login.address, request.user, request.token, now);
        const std::string brake = LoginGate::KeyOf(login.address, request.user);
        for (PendingLoginPtr& held : m_held.TakeGroup(brake)) Enqueue(std::move(held));
        return {LoginOk, {}, std::move(*finding.user.record)};
    }
    m_gate.OnFailure(login.address, request.user, now);
    m_known.Forget(login.address, request.user, request.token);
    return {LoginWrong, m_translator.Translate(kWrong), {}};
}

}  // namespace kalvex::vantrel
