#include "host/LinkTests.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <mutex>
#include <set>
#include <utility>

#include "text/CodePage.h"
#include "text/TextFormat.h"

namespace kalvex::host {

namespace {

constexpr std::chrono::milliseconds kLockLimit{600000};
constexpr int kSuccess = 1;

// A row a kind. The mutex guards the arrays of that kind in all documents.
struct LinkKindRow {
    platform::ThreadIdentity identity;
    int (*run)(CLinkInfo& info, platform::NetworkProbes& probes, const LinkLog& log);
    std::timed_mutex mutex;
};

int RunPing(CLinkInfo& info, platform::NetworkProbes& probes, const LinkLog& log);
int RunFtp(CLinkInfo& info, platform::NetworkProbes& probes, const LinkLog& log);
int RunHttp(CLinkInfo& info, platform::NetworkProbes& probes, const LinkLog& log);

LinkKindRow& RowOf(LinkKind kind) {
    static LinkKindRow rows[static_cast<std::size_t>(LinkKind::Count)] = {
        {{"ExecutePingThread", 102}, RunPing, {}},
        {{"ExecuteFtpConnectionThread", 103}, RunFtp, {}},
        {{"ExecuteHttpConnectionThread", 104}, RunHttp, {}},
    };
    return rows[static_cast<std::size_t>(kind)];
}

// The threads of all documents that are not joined yet. Main thread.
int& ThreadCount() {
    static int count = 0;
    return count;
}

// Of all documents. Main thread.
std::set<std::shared_ptr<platform::PostedWork>>& Inboxes() {
    static std::set<std::shared_ptr<platform::PostedWork>> inboxes;
    return inboxes;
}

// A lock that is not to be had within the limit ends the process.
class LinkLock {
  public:
    explicit LinkLock(LinkKind kind) : m_mutex(RowOf(kind).mutex) {
        if (!m_mutex.try_lock_until(std::chrono::system_clock::now() + kLockLimit))
            std::terminate();
    }
    ~LinkLock() { m_mutex.unlock(); }
    LinkLock(const LinkLock&) = delete;
    LinkLock& operator=(const LinkLock&) = delete;

  private:
    std::timed_mutex& m_mutex;
};

int RunPing(CLinkInfo& info, platform::NetworkProbes& probes, const LinkLog&) {
    return probes.Ping(text::ToUtf8(info.address), info.timeout);
}

enum FtpResult : int {
    FtpNoSession = -1,
    FtpNoConnection = -2,
    FtpNoUser = -4,
    FtpNotClosed = -5,
};

constexpr int kFtpTries = 3;
constexpr std::uint32_t kFtpPauseMilliseconds = 2000;
constexpr std::size_t kFtpErrorLength = 200;
constexpr const char* kFtpSealed =
    "Błąd FTP: klucz tej instalacji nie otwiera zabezpieczonego hasła użytkownika %s, a hasło "
    "źródła z profilu nie jest hasłem dla skryptu; właściwe tworzy kalvexd --protect";
constexpr const char* kFtpRetry = "Błąd FTP (Ponowienie próby nawiązania połączenia)";

void SetErrorText(CLinkInfo& info, const char* text) {
    info.errorText = text::FromUtf8(text);
}

void RemoveDashes(std::string& text) {
    std::erase(text, '-');
}

std::string ShortWords(const std::string& error) {
    std::string words = text::FromUtf8(error).substr(0, kFtpErrorLength);
    words.erase(words.find_last_not_of("\r\n") + 1);
    return words;
}

bool ConnectFtp(CLinkInfo& info, platform::FtpSession& session, platform::NetworkProbes& probes,
                const LinkLog& log) {
    const bool isProtected = info.crypt != nullptr && info.crypt->CanDecryptText(info.password);
    platform::FtpLogin login{
        text::ToUtf8(info.address), static_cast<std::uint16_t>(info.port), info.user, {}};
    for (int i = 0; i < kFtpTries; ++i) {
        if (i > 0) log(kFtpRetry, {}, platform::LogAlways);
        std::string error;
        login.password = isProtected ? info.crypt->DecryptText(info.password) : info.password;
        const bool connected = session.Connect(login, error);
        platform::CCrypt::SecureEmptyString(login.password);
        if (connected) return true;
        if (i == 0)
            info.errorText = text::FormatText(text::FromUtf8("Błąd FTP (%s)"), {ShortWords(error)});
        probes.Pause(kFtpPauseMilliseconds);
    }
    return false;
}

int RunFtp(CLinkInfo& info, platform::NetworkProbes& probes, const LinkLog& log) {
    const std::unique_ptr<platform::FtpSession> session = probes.OpenFtpSession();
    if (!session) {
        SetErrorText(info, "Błąd otwarcia sesji FTP");
        RemoveDashes(info.errorText);
        return FtpNoSession;
    }
    if (info.user.empty()) {
        SetErrorText(info, "Nie zdefiniowano w programie nazwy użytkownika FTP");
        return FtpNoUser;
    }
    if (info.address.empty()) {
        SetErrorText(info, "Nie zdefiniowano w programie adresu serwera FTP");
        return FtpNoConnection;
    }
    if (platform::CCrypt::GetCryptHeader(info.password) &&
        (info.crypt == nullptr || !info.crypt->CanDecryptText(info.password))) {
        info.errorText = text::FormatText(text::FromUtf8(kFtpSealed), {info.user});
        log(kFtpSealed, {info.user}, platform::LogErrors);
        return FtpNoConnection;
    }
    if (!ConnectFtp(info, *session, probes, log)) {
        RemoveDashes(info.errorText);
        return FtpNoConnection;
    }
    if (text::ToUpper(session->GetGreeting()).find("FILEZILLA") != std::string::npos) {
        session->Command("OPTS UTF8 OFF");
    }
    if (!session->Close()) {
        SetErrorText(info, "Połączenie FTP zostało przerwane");
        return FtpNotClosed;
    }
    return kSuccess;
}

struct HttpFailureRow {
    platform::TcpStep step;
    int result;
    const char* text;
};

constexpr HttpFailureRow kHttpFailures[] = {
    {platform::TcpStep::Resolve, -3, "Nieprawidłowy adres serwera http %s. %s"},
    {platform::TcpStep::Socket, -2,
     "Wystąpił błąd podczas otwierania połączenia z serwerem http %s. %s"},
    {platform::TcpStep::Connect, -1,
     "Wystąpił błąd podczas próby zestawienia połączenia z serwerem http %s. %s"},
    {platform::TcpStep::Close, -5,
     "Wystąpił błąd podczas zamykania połączenia z serwerem http %s. %s"},
};

int RunHttp(CLinkInfo& info, platform::NetworkProbes& probes, const LinkLog& log) {
    const platform::TcpOutcome outcome =
        probes.ConnectTcp(text::ToUtf8(info.address), static_cast<std::uint16_t>(info.port));
    for (const HttpFailureRow& row : kHttpFailures) {
        if (row.step != outcome.failed) continue;
        const std::string words = text::FromUtf8(outcome.error);
        info.errorText = text::FormatText(text::FromUtf8(row.text), {info.address, words});
        log(row.text, {info.address, words}, platform::LogErrors);
        return row.result;
    }
    return kSuccess;
}

}  // namespace

int RunLinkTest(LinkKind kind, CLinkInfo& info, platform::NetworkProbes& probes,
                const LinkLog& log) {
    return RowOf(kind).run(info, probes, log);
}

LinkTests::LinkTests(const operands::ValueServices& services)
    : m_services(services), m_inbox(std::make_shared<platform::PostedWork>([this] {
          m_services.loop->Post([handed = std::weak_ptr(m_inbox)] {
              if (const auto inbox = handed.lock()) inbox->Run();
          });
      })) {
    Inboxes().insert(m_inbox);
}

LinkTests::~LinkTests() {
    Inboxes().erase(m_inbox);
    for (const LinkKind kind : {LinkKind::Ping, LinkKind::Ftp, LinkKind::Http}) {
        const LinkLock lock(kind);
        for (auto& [address, same] : TestsOf(kind).started) std::ranges::for_each(same, Join);
        TestsOf(kind) = {};
    }
    m_inbox->Run();
}

bool LinkTests::Start(LinkKind kind, LinkTarget target) {
    // Those that have finished may wait for the loop to join them.
    if (ThreadCount() >= kMostLinkTests) {
        for (const auto& inbox : Inboxes()) inbox->Run();
    }
    if (ThreadCount() >= kMostLinkTests) return false;
    StartedTest test{std::make_unique<CLinkInfo>(std::move(target)), {}};
    const LinkLog log = [this](const char* text, std::vector<std::string> values, int level) {
        m_inbox->Post([this, text, values = std::move(values), level] {
            m_services.log.Log(text::FormatText(m_services.translator.Translate(text), values),
                               level);
        });
    };
    test.worker = m_services.probes->StartThread(
        RowOf(kind).identity,
        [this, kind, info = test.info.get(), probes = m_services.probes, log] {
            const std::string address = info->address;
            const int result = RunLinkTest(kind, *info, *probes, log);
            info->running.store(0);
            info->result.store(result);
            m_inbox->Post([this, kind, address, info] { Finish(kind, address, info); });
        });
    if (!test.worker.joinable()) return true;
    ++ThreadCount();
    const LinkLock lock(kind);
    TestsOf(kind).started[test.info->address].push_back(std::move(test));
    return true;
}

void LinkTests::Join(StartedTest& test) {
    if (!test.worker.joinable()) return;
    test.worker.join();
    --ThreadCount();
}

void LinkTests::DropOldest(Tests& tests) {
    const std::uint64_t number = tests.kept.begin()->first;
    const auto place = tests.started.find(tests.kept.begin()->second);
    std::erase_if(place->second,
                  [number](const StartedTest& test) { return test.finished == number; });
    if (place->second.empty()) tests.started.erase(place);
    tests.kept.erase(tests.kept.begin());
}

// Of the finished tests of an address the newest alone can still be asked for.
void LinkTests::KeepNewest(Tests& tests, std::vector<StartedTest>& same) {
    bool isOlder = false;
    for (std::size_t i = same.size(); i-- > 0;) {
        if (same[i].finished == 0) continue;
        if (!std::exchange(isOlder, true)) continue;
        tests.kept.erase(same[i].finished);
        same.erase(same.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

// The test may be gone, and another be in its place that runs.
void LinkTests::Finish(LinkKind kind, const std::string& address, const CLinkInfo* info) {
    const LinkLock lock(kind);
    Tests& tests = TestsOf(kind);
    const auto place = tests.started.find(address);
    if (place == tests.started.end()) return;
    std::vector<StartedTest>& same = place->second;
    const auto test = std::ranges::find_if(
        same, [info](const StartedTest& other) { return other.info.get() == info; });
    if (test == same.end() || test->info->running.load() != 0 || test->finished != 0) return;
    Join(*test);
    test->finished = ++tests.finished;
    tests.kept.emplace(test->finished, address);
    KeepNewest(tests, same);
    if (tests.kept.size() > kMostLinkResults) DropOldest(tests);
}

int LinkTests::TakeFinished(Tests& tests, std::string_view address) {
    const auto place = tests.started.find(address);
    if (place == tests.started.end()) return LinkUnknown;
    int result = LinkUnknown;
    bool anyRunning = false;
    std::vector<StartedTest>& same = place->second;
    for (std::size_t i = same.size(); i-- > 0;) {
        StartedTest& test = same[i];
        if (test.info->running.load() != 0) {
            anyRunning = true;
            continue;
        }
        Join(test);
        if (result == LinkUnknown) result = test.info->result.load();
        tests.kept.erase(test.finished);
        same.erase(same.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if (same.empty()) tests.started.erase(place);
    return anyRunning ? LinkRunning : result;
}

int LinkTests::TakeResult(LinkKind kind, std::string_view address) {
    int result = LinkUnknown;
    {
        const LinkLock lock(kind);
        result = TakeFinished(TestsOf(kind), address);
    }
    m_inbox->Run();
    return result;
}

}  // namespace kalvex::host
