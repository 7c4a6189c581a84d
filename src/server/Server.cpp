#include "server/Server.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/Files.h"
#include "platform/ProcessMemory.h"
#include "server/ClientText.h"
#include "server/Session.h"
#include "text/CodePage.h"
#include "text/ControlText.h"
#include "text/TextFormat.h"
#include "value/LocalTimeText.h"

namespace kalvex::server {

namespace {

constexpr std::size_t kLogLines = 1000;
constexpr int kLockPatience = 2;         // seconds
constexpr std::int64_t kLoginTime = 30;  // seconds until a client has to have logged in

constexpr const char* kDatabaseSuffixes[] = {"", "-wal", "-shm", "-journal"};

constexpr const char* kStarted = platform::Translatable("Uruchomienie serwera %s");
constexpr const char* kStopped = platform::Translatable("Zatrzymanie serwera %s");
constexpr const char* kTaken = platform::Translatable("%s: używa go już inny serwer (%s)");
constexpr const char* kClosed =
    platform::Translatable("%s: dostęp mieli inni, teraz ma go tylko właściciel");
constexpr const char* kOpen =
    platform::Translatable("%s: dostęp mają inni i nie można go odebrać (%s)");
constexpr const char* kUnchanged = platform::Translatable("Konfiguracja bez zmian");
constexpr const char* kNextStart =
    platform::Translatable("%s: zmiana zadziała po ponownym uruchomieniu serwera");
constexpr const char* kReloaded = platform::Translatable("Konfiguracja odczytana ponownie");
constexpr const char* kManyClients =
    platform::Translatable("Zbyt wielu klientów, odrzucono połączenie");
constexpr const char* kJumped = platform::Translatable("Zegar przeskoczył o %s s");
constexpr const char* kNotStored = platform::Translatable("Błąd zapisu danych (%s)");
constexpr const char* kStoredAgain =
    platform::Translatable("Dane znów są zapisywane, czekało operacji %s");
constexpr const char* kRefusesWrites =
    platform::Translatable("Zbyt wiele danych czeka na zapis, zapisy klientów są odrzucane");
constexpr const char* kLosing =
    platform::Translatable("Zbyt wiele danych czeka na zapis, wartości archiwalne przepadają");
constexpr const char* kLost = platform::Translatable("Przepadło wartości %s od %s do %s");
constexpr const char* kNoTime = platform::Translatable("zabrakło czasu");
constexpr const char* kNotStoredAtEnd = platform::Translatable("Nie zapisano operacji %s (%s)");

}  // namespace

Server::Server(const platform::Clock& clock, platform::LogSink& log,
               const platform::Translator& translator, platform::MainLoop& loop,
               platform::PasswordCost cost, const StoreSettings& store)
    : m_clock(clock),
      m_log(log),
      m_translator(translator),
      m_loop(loop),
      m_cost(cost),
      m_users(cost),
      m_store(loop, store),
      m_alarms(m_plant, m_store, clock, translator,
               [this](const std::string& line) { Log(line, platform::LogEvents); }),
      m_recorder(
          m_plant, m_store, [this](const StoreOutcome& outcome) { OnOutcome(outcome); },
          [this](const ValueLoss& loss) { OnLoss(loss); }),
      m_automatic(m_plant, m_store, [this](const StoreOutcome& outcome) { OnOutcome(outcome); }),
      m_late(m_store, [this](const StoreOutcome& outcome) { OnOutcome(outcome); }),
      m_rollups(m_store),
      m_freeSpace([this, look = store.freeBytes] { return look(m_definitions.dataFolder); }),
      m_startedAt(clock.Elapsed()) {
    m_store.OnTrouble([this](const StoreTrouble& trouble) { OnTrouble(trouble); });
}

Server::~Server() = default;

bool Server::Start(const std::string& configuration, std::vector<std::string>& errors) {
    m_configuration = configuration;
    if (!LoadDefinitions(configuration, m_translator, m_definitions, errors) || !OpenFiles(errors))
        return false;
    m_logins = std::make_unique<vantrel::LoginDesk>(m_users, m_clock, m_translator, m_loop, m_cost);
    m_reportChanges.Load(m_store.ChangesAtOpening());
    m_writeAnswers.Load(m_store.AnswersAtOpening());
    m_alarms.Load();
    StepTime();
    Define();
    m_recorder.Begin(m_clock.Now());
    m_started = true;
    Log(kStarted, {m_definitions.name}, platform::LogAlways);
    WatchFreeSpace();
    return true;
}

bool Server::OpenFiles(std::vector<std::string>& errors) {
    const std::string& folder = m_definitions.dataFolder;
    bool taken = false;
    std::string error;
    if (!platform::MakePrivateFolder(folder, error)) {
        errors.push_back(folder + ": " + error);
        return false;
    }
    if (!m_lock.Acquire(folder + "/lock", taken, error, platform::PauseFor(kLockPatience))) {
        errors.push_back(
            platform::InWords({taken ? kTaken : "%s: %s", {folder, error}}, m_translator));
        return false;
    }
    if (!CloseFilesToOthers(errors)) return false;
    platform::Notice fault;
    if (!m_store.Open(StorePath(m_definitions), fault)) {
        errors.push_back(platform::InWords(fault, m_translator));
        return false;
    }
    if (!m_users.Open(m_definitions.usersFile, error)) {
        const std::string reason = m_translator.Translate(text::ToUtf8(error).c_str());
        errors.push_back(m_definitions.usersFile + ": " + text::ToUtf8(reason));
        return false;
    }
    return true;
}

// What older versions have left open, or somebody has opened since.
bool Server::CloseFilesToOthers(std::vector<std::string>& errors) {
    bool taken = false;
    std::string error;
    const auto close = [&](const std::string& path) {
        const bool closed = platform::CloseToOthers(path, taken, error);
        if (taken) Log(kClosed, {text::FromUtf8(path)}, platform::LogErrors);
        return closed;
    };
    // One of somebody else's is theirs to close; the files in it are closed all the same.
    if (!close(m_definitions.dataFolder)) {
        Log(kOpen, {text::FromUtf8(m_definitions.dataFolder), text::FromUtf8(error)},
            platform::LogErrors);
    }
    for (const std::string& database : {StorePath(m_definitions), m_definitions.usersFile}) {
        for (const char* suffix : kDatabaseSuffixes) {
            if (close(database + suffix)) continue;
            errors.push_back(platform::InWords({kOpen, {database + suffix, error}}, m_translator));
            return false;
        }
    }
    return true;
}

void Server::Define() {
    m_rights = Rights(m_definitions.access);
    m_logins->AllowNobody(m_definitions.nobody);
    m_plant.Define(m_definitions.variables, m_rights, m_store, m_clock.Now());
    m_alarms.Define();
    m_automatic.OnDefine();
    m_recorder.OnChanges(m_plant.TakeChanges());
    m_recorder.Add(m_alarms.TakeOperations());
    for (const auto& [number, session] : m_sessions) session->OnDefine();
}

void Server::Reload() {
    Definitions definitions;
    std::vector<std::string> errors;
    if (!LoadDefinitions(m_configuration, m_translator, definitions, errors)) {
        for (const std::string& error : errors) Log(text::FromUtf8(error), platform::LogErrors);
        Log(kUnchanged, {}, platform::LogErrors);
        return;
    }
    for (const std::string& key : KeepUntilNextStart(m_definitions, definitions)) {
        Log(kNextStart, {key}, platform::LogErrors);
    }
    Distribute();
    m_definitions = std::move(definitions);
    Define();
    m_confirmed.Trust();
    Log(kReloaded, {}, platform::LogEvents);
}

void Server::Tick() {
    const std::int64_t now = m_clock.Now();
    if (m_lastTick == now) return;
    const bool isFirst = !std::exchange(m_lastTick, now);
    // Before this second's own work is handed over.
    m_refusesWrites = m_refusesWrites && !m_store.IsEmpty();
    StepTime();
    m_plant.Step(now, isFirst ? 0 : m_confirmed.Passed());
    m_alarms.Step();
    Distribute();
    m_recorder.Step(m_definitions, now, Confirmed());
    // What is lost has to be told to the archives before a report is computed from them.
    if (!m_recorder.IsLosing()) {
        m_automatic.Step(m_definitions, Confirmed(), m_confirmed.IsSure());
        m_late.Step(now, Confirmed());
        m_rollups.Step(Confirmed());
    }
    m_reportChanges.Publish();
    m_logins->Step();
    WatchFreeSpace();
    for (const auto& leftOut : m_refusals.TakeLeftOut(Elapsed())) {
        Log(vantrel::LeftOutLine(leftOut, m_translator), platform::LogErrors);
    }
    for (const auto& [number, session] : m_sessions) {
        session->SendReportChanges();
        session->TellRefusals(Elapsed());
        session->CloseUnlessLoggedIn(Elapsed() - kLoginTime);
    }
}

void Server::StepTime() {
    const std::int64_t jump = m_confirmed.Step(Now(), Elapsed());
    if (jump != 0) Log(kJumped, {std::to_string(jump)}, platform::LogErrors);
}

void Server::WatchFreeSpace() {
    const auto little = static_cast<std::uint64_t>(m_definitions.freeSpace) << 20;
    const platform::Notice notice = m_freeSpace.Step(Elapsed(), little);
    if (!notice) return;
    Log(text::FromUtf8(platform::InWords(notice, m_translator)), platform::LogErrors);
}

void Server::Stop() {
    if (!std::exchange(m_started, false)) return;
    Distribute();
    m_recorder.End(m_clock.Now(), Confirmed());
    const StoreTrouble left = m_store.Close();
    if (!left.over) {
        const std::string reason =
            left.error.empty() ? m_translator.Translate(kNoTime) : left.error;
        Log(kNotStoredAtEnd, {std::to_string(left.operations), reason}, platform::LogErrors);
    }
    Log(kStopped, {m_definitions.name}, platform::LogAlways);
}

void Server::Distribute() {
    const std::vector<std::size_t> changed = m_plant.TakeChanges();
    m_recorder.OnChanges(changed);
    m_recorder.Add(m_alarms.TakeOperations());
    for (const std::size_t index : changed) {
        for (const PlantVariable::Subscriber& subscriber : m_plant.At(index).subscribers) {
            subscriber.session->MarkChanged(subscriber.handle);
        }
    }
    for (const auto& [number, session] : m_sessions) session->SendChanges();
}

ServerFigures Server::Figures() {
    ServerFigures figures;
    figures.uptime = Elapsed() - m_startedAt;
    for (const auto& [number, session] : m_sessions) {
        ++(session->IsLoggedIn() ? figures.clients : figures.strangers);
        figures.subscriptions += session->SubscriptionCount();
    }
    figures.variables = m_plant.Size();
    figures.store = m_store.Figures();
    figures.lost = m_recorder.Lost();
    figures.freeBytes = m_freeSpace.Bytes();
    for (const char* suffix : kDatabaseSuffixes) {
        std::error_code fault;
        const std::uintmax_t size =
            std::filesystem::file_size(StorePath(m_definitions) + suffix, fault);
        if (!fault) figures.storeBytes += size;
    }
    figures.memory = platform::ResidentBytes();
    return figures;
}

void Server::LogHealth() {
    for (const std::string& line : FormatHealthLines(Figures(), m_translator)) {
        Log(line, platform::LogAlways);
    }
}

// ---- sessions

std::unique_ptr<vantrel::ServerSession> Server::Accept(vantrel::ServerLink& link) {
    const std::string address = link.PeerAddress();
    const vantrel::ConversationSlots::Entry slot =
        m_slots.Enter(m_lastSession + 1, address, m_logins->KnowsAddress(address),
                      static_cast<std::size_t>(m_definitions.maxClients));
    if (!slot.isTaken) {
        if (m_refusals.MayLog(address, Elapsed())) Log(kManyClients, {}, platform::LogErrors);
        return nullptr;
    }
    if (Session* leaving = FindSession(slot.leaves)) leaving->SendAway();
    auto session = std::make_unique<Session>(*this, link, ++m_lastSession);
    m_sessions.emplace(m_lastSession, session.get());
    return session;
}

Session* Server::FindSession(std::uint64_t number) const {
    const auto found = m_sessions.find(number);
    return found == m_sessions.end() ? nullptr : found->second;
}

void Server::Forget(const Session& session) {
    m_sessions.erase(session.Number());
    m_slots.Leave(session.Number());
}

void Server::ListVariables(vantrel::LoginRequest login, std::string address,
                           std::weak_ptr<const void> asker, ListAnswer answer) {
    const std::string user = login.user;
    const std::string client = ClientText(login.clientName, address);
    m_logins->Check(std::move(login), address, std::move(asker),
                    [this, user, client, address, answer = std::move(answer)](const auto& verdict) {
                        LogLogin(verdict, user, client, address);
                        if (verdict.code != vantrel::LoginOk) return answer(std::nullopt);
                        answer(DefinitionsFor(verdict.user, address));
                    });
}

std::vector<vantrel::VariableDefinition> Server::DefinitionsFor(const platform::UserRecord& user,
                                                                const std::string& address) const {
    const std::vector<Rights::Granted> granted = m_rights.GrantedTo(user, address);
    std::vector<vantrel::VariableDefinition> list;
    for (std::size_t index = 0; index < m_plant.Size(); ++index) {
        const PlantVariable& variable = m_plant.At(index);
        if (granted[variable.rule].read) list.push_back(DefinitionOf(variable.config));
    }
    return list;
}

// ---- log and outcomes

void Server::Log(const std::string& text, int level) {
    m_log.Log(text, level);
    m_lastMessages.push_back({level, m_clock.Now(), text::EscapeControls(text)});
    if (m_lastMessages.size() > kLogLines) m_lastMessages.pop_front();
    for (const auto& [number, session] : m_sessions) {
        session->SendLog(m_lastMessages.back());
    }
}

void Server::Log(const char* polish, std::initializer_list<std::string_view> values, int level) {
    Log(text::FormatText(m_translator.Translate(polish), values), level);
}

void Server::LogLogin(const vantrel::LoginVerdict& verdict, std::string_view user,
                      const std::string& client, const std::string& address) {
    const bool accepted = verdict.code == vantrel::LoginOk;
    if (!accepted && !m_refusals.MayLog(address, Elapsed())) return;
    if (!verdict.fault.empty()) {
        Log(vantrel::LoginFaultLine(verdict, m_translator), platform::LogErrors);
    }
    Log(LoginLine(verdict, user, client, m_translator),
        accepted ? platform::LogEvents : platform::LogErrors);
}

std::deque<vantrel::LogMessage> Server::LastMessages(std::size_t count) const {
    const std::size_t first = m_lastMessages.size() - std::min(count, m_lastMessages.size());
    return {m_lastMessages.begin() + static_cast<std::ptrdiff_t>(first), m_lastMessages.end()};
}

// ---- the store

bool Server::TakesWrites() {
    if (m_recorder.TakesWrites(m_clock.Now())) return true;
    if (!std::exchange(m_refusesWrites, true)) Log(kRefusesWrites, {}, platform::LogErrors);
    return false;
}

void Server::MarkLate(const PlantVariable& variable, value::ValueKind kind, std::int64_t time,
                      std::vector<StoreOperation>& operations) {
    m_late.Mark(variable, kind, time, static_cast<int>(m_definitions.dayStart), Confirmed(),
                operations);
}

void Server::Write(std::vector<StoreOperation> operations, std::function<void()> done) {
    m_recorder.Write(std::move(operations), m_clock.Now(),
                     [this, done = std::move(done)](const StoreOutcome& outcome) {
                         OnOutcome(outcome);
                         done();
                     });
}

void Server::OnOutcome(const StoreOutcome& outcome) {
    m_reportChanges.Take(outcome.changed);
    m_rollups.OnOutcome(outcome);
    for (const std::string& line : KeptLines(outcome.kept, m_plant, m_translator)) {
        Log(line, platform::LogErrors);
    }
}

void Server::OnTrouble(const StoreTrouble& trouble) {
    m_rollups.OnTrouble(trouble.over);
    if (trouble.over) {
        Log(kStoredAgain, {std::to_string(trouble.operations)}, platform::LogErrors);
    } else {
        Log(kNotStored, {trouble.error}, platform::LogErrors);
    }
}

void Server::OnLoss(const ValueLoss& loss) {
    if (loss.over) {
        Log(kLost,
            {std::to_string(loss.values), value::FormatLocalTime(loss.from),
             value::FormatLocalTime(loss.to)},
            platform::LogErrors);
    } else {
        Log(kLosing, {}, platform::LogErrors);
    }
}

}  // namespace kalvex::server
