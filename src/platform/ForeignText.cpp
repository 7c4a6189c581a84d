#include "platform/ForeignText.h"

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
                     const Translator& translator, ToldFiles& told) {
    const Notice notice = DescribeForeignText(path, content);
    if (!notice) {
        told.erase(path);
        return;
    }
    std::string words = text::FromUtf8(InWords(notice, translator));
    const auto last = told.find(path);
    if (last != told.end() && last->second == words) return;
    log.Log(words, LogErrors);
    if (last == told.end() && told.size() >= kMostToldFiles) told.clear();
    told[path] = std::move(words);
}

}  // namespace kalvex::platform
