#include "programs/kalvexctl/Login.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

#include "platform/PasswordHash.h"
#include "programs/SilentTerminal.h"
#include "text/CodePage.h"

namespace kalvex::kalvexctl {

namespace {

constexpr const char* kVariable = "KALVEXCTL_LOGIN";
constexpr const char* kTerminal = "/dev/tty";
constexpr const char* kPrompt = platform::Translatable("Hasło: ");
constexpr std::size_t kLongest = 4096;  // bytes of a file or an answer
constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

class File {
  public:
    File(const std::string& path, int flags)
        : m_descriptor(::open(path.c_str(), flags | O_CLOEXEC)) {}
    ~File() {
        if (m_descriptor >= 0) ::close(m_descriptor);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int Get() const { return m_descriptor; }

  private:
    const int m_descriptor;
};

bool ReadAll(int descriptor, bool firstLine, std::string& content) {
    char piece[512];
    while (content.size() < kLongest) {
        const ssize_t read = ::read(descriptor, piece, sizeof piece);
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) return false;
        content.append(piece, static_cast<std::size_t>(read));
        if (read == 0 || (firstLine && content.find('\n') != std::string::npos)) break;
    }
    std::memset(piece, 0, sizeof piece);
    return true;
}

std::string TakeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return text::FromUtf8(line);
}

}  // namespace

Login::~Login() {
    platform::WipePassword(m_password);
}

MaybeEnding Login::Read(const ControlOptions& options, Loop& loop,
                        const platform::Translator& translator) {
    if (options.user) {
        m_user = *options.user;
        return AskAtTerminal(loop, translator);
    }
    const char* variable = std::getenv(kVariable);
    const std::string path = !options.loginFile.empty() ? options.loginFile
                             : variable != nullptr      ? std::string(variable)
                                                        : std::string();
    if (path.empty()) return {};
    return ReadFile(path, translator);
}

MaybeEnding Login::ReadFile(const std::string& path, const platform::Translator& translator) {
    const std::string name = text::FromUtf8(path);
    const auto unreadable = [&](int error) {
        return MakeEnding(Fault::NoLoginFile, {name, text::FromUtf8(std::strerror(error))},
                          translator);
    };
    const File file(path, O_RDONLY | O_NONBLOCK);
    struct stat info {};
    if (file.Get() < 0 || ::fstat(file.Get(), &info) != 0) return unreadable(errno);
    if (S_ISDIR(info.st_mode)) return unreadable(EISDIR);
    if (info.st_uid != ::geteuid() || (info.st_mode & kOthers) != 0) {
        return MakeEnding(Fault::OpenToOthers, {name}, translator);
    }
    std::string content;
    if (!ReadAll(file.Get(), false, content)) return unreadable(errno);
    std::string_view rest = content;
    m_user = TakeLine(rest);
    m_password = TakeLine(rest);
    platform::WipePassword(content);
    return {};
}

MaybeEnding Login::AskAtTerminal(Loop& loop, const platform::Translator& translator) {
    const File terminal(kTerminal, O_RDWR | O_NOCTTY);
    if (terminal.Get() < 0) return MakeEnding(Fault::NoTerminal, {}, translator);
    std::string answer;
    bool answered = false;
    const std::string prompt = text::ToUtf8(translator.Translate(kPrompt));
    {
        const programs::SilentTerminal silence(terminal.Get());
        [[maybe_unused]] ssize_t written = ::write(terminal.Get(), prompt.data(), prompt.size());
        while (!loop.IsReadable() && loop.GetSignal() == 0) {
            loop.Turn(std::numeric_limits<std::int64_t>::max(), terminal.Get());
        }
        if (loop.IsReadable()) answered = ReadAll(terminal.Get(), true, answer) && !answer.empty();
        written = ::write(terminal.Get(), "\n", 1);
    }
    if (loop.GetSignal() != 0) return Ending{ExitSignal + loop.GetSignal()};
    if (!answered) return MakeEnding(Fault::NoTerminal, {}, translator);
    std::string_view rest = answer;
    m_password = TakeLine(rest);
    platform::WipePassword(answer);
    return {};
}

}  // namespace kalvex::kalvexctl
