#include <sys/stat.h>
#include <xcb/xcb.h>

#include <QApplication>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "programs/kalvex/Desk.h"
#include "programs/kalvex/Options.h"

namespace {

// Platforms of the toolkit that need a display, by the beginning of their names.
constexpr std::string_view kShown[] = {"xcb", "wayland"};

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// The folder is made, with those above it, unless it is there.
bool Enter(const std::string& folder, bool isMade) {
    std::error_code fault;
    if (isMade) std::filesystem::create_directories(folder, fault);
    std::filesystem::current_path(folder, fault);
    if (!fault) return true;
    std::fprintf(stderr, "kalvex: %s: %s\n", folder.c_str(), fault.message().c_str());
    return false;
}

// The toolkit ends the process by a signal when it finds no display.
bool HasDisplay() {
    const std::string platform = Variable("QT_QPA_PLATFORM");
    const bool needsNone = !platform.empty() && std::ranges::none_of(kShown, [&](auto name) {
        return platform.starts_with(name);
    });
    if (needsNone || !Variable("WAYLAND_DISPLAY").empty()) return true;
    if (Variable("DISPLAY").empty()) {
        std::fputs("kalvex: there is no display: DISPLAY and WAYLAND_DISPLAY are not set\n",
                   stderr);
        return false;
    }
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const bool opens = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    if (!opens) {
        std::fprintf(stderr, "kalvex: cannot open the display %s\n", Variable("DISPLAY").c_str());
    }
    return opens;
}

}  // namespace

int main(int argc, char** argv) {
    tzset();
    ::umask(0027);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::error_code fault;
    const std::string current = std::filesystem::current_path(fault).string();
    kalvex::desk::DeskLine line = kalvex::desk::ParseDeskLine({argv + 1, argv + argc}, current);
    if (line.exitStatus) {
        std::fputs(line.message.c_str(), *line.exitStatus == 0 ? stdout : stderr);
        return *line.exitStatus;
    }
    kalvex::programs::ModuleOptions& options = line.options;
    const bool isUsual = options.workingDir.empty();
    if (isUsual) {
        options.workingDir =
            kalvex::desk::UsualFolder(current, Variable("HOME"), Variable("XDG_DATA_HOME"));
    }
    if (options.logDir.empty()) options.logDir = options.workingDir;
    if (!HasDisplay() || !Enter(options.workingDir, isUsual) || !Enter(options.logDir, false) ||
        !Enter(options.workingDir, false)) {
        return kalvex::programs::ExitFailed;
    }
    kalvex::desk::HoldSignals();
    int count = 1;
    const QApplication application(count, argv);
    return kalvex::desk::KalvexDesk(options).Run();
}
