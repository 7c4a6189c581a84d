#include "platform/ForeignText.h"

#include <map>
#include <utility>

#include "text/CodePage.h"
#include "text/Encoding.h"
#include "text/ShellWord.h"

namespace kalvex::platform {

Notice DescribeForeignText(const std::string& path, std::string_view content) {
    const std::optional<int> line = text::FindUtf8Line(content);
    if (!line) return {};
    return {Translatable("%s:%s: plik jest w UTF-8, a jest czytany w kodzie Windows-1250; zamieni "
                         "go polecenie: kalvex-convert %s"),
            {path, std::to_string(*line), text::ShellWord(path)}};
}

void TellForeignText(const std::string& path, std::string_view content, LogSink& log,
                     const Translator& translator) {
    static std::map<std::pair<LogSink*, std::string>, std::string> told;
    const std::pair key(&log, path);
    const Notice notice = DescribeForeignText(path, content);
    if (!notice) {
        told.erase(key);
        return;
    }
    std::string words = text::FromUtf8(InWords(notice, translator));
    std::string& last = told[key];
    if (last == words) return;
    log.Log(words, LogErrors);
    last = std::move(words);
}

}  // namespace kalvex::platform
