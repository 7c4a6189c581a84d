#include "app_fakes.h"

#include <algorithm>

namespace kalvex::app {

AppTest::~AppTest() {
    if (m_app) m_app->ExitInstance();
}

bool AppTest::Start(std::vector<std::string> arguments) {
    AppWorld world{m_clock,
                   m_translator,
                   m_loop,
                   m_profile,
                   m_crypt,
                   m_users,
                   m_instances,
                   platform::NoProcesses(),
                   platform::NoFiles(),
                   platform::NoProbes(),
                   m_vantrel,
                   {&m_mordex, &m_dorlin, &m_vantrel}};
    world.window = m_hasWindow ? &m_window : nullptr;
    world.service = m_service;
    world.canMirror = m_canMirror;
    world.arguments = std::move(arguments);
    world.logFolder = m_folder.Path();
    world.workingDir = m_workingDir;
    world.hostName = "stacja";
    m_app = std::make_unique<CKalvexApp>(world);
    m_app->Log().SetListener(this);
    return m_app->InitInstance();
}

Record AppTest::Without(const std::vector<std::string>& words) const {
    Record rest;
    for (const std::string& line : m_record) {
        const std::string word = line.substr(0, line.find(' '));
        if (std::ranges::find(words, word) == words.end()) rest.push_back(line);
    }
    return rest;
}

Record AppTest::Those(const std::string& word) const {
    Record found;
    for (const std::string& line : m_record) {
        if (line.starts_with(word + ' ')) found.push_back(line.substr(word.size() + 1));
    }
    return found;
}

}  // namespace kalvex::app
