#include "workbench/qt/RenamingDialogs.h"

#include <QFileDialog>

#include "text/CodePage.h"
#include "workbench/qt/FileFilters.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

class OpenedScript final : public app::RenamedScript {
  public:
    OpenedScript(app::CKalvexApp& app, engine::CKalvexDoc& document)
        : m_app(app), m_document(document) {}
    ~OpenedScript() override { m_app.CloseScript(m_document); }

    engine::ScriptText& Text() override { return m_document.Text(); }
    bool Save(std::string& error) override { return m_document.Save(error); }

  private:
    app::CKalvexApp& m_app;
    engine::CKalvexDoc& m_document;
};

std::optional<std::string> PathOf(const QString& answer) {
    if (answer.isEmpty()) return std::nullopt;
    return answer.toStdString();
}

}  // namespace

std::optional<std::string> RenamingDialogs::AskForFile(std::string_view filter) {
    return PathOf(QFileDialog::getOpenFileName(&m_parent, {}, {}, ToFileFilter(ToQt(filter))));
}

std::optional<std::string> RenamingDialogs::AskForFolder(std::string_view title) {
    return PathOf(QFileDialog::getExistingDirectory(&m_parent, ToQt(title)));
}

std::unique_ptr<app::RenamedScript> RenamingDialogs::Open(const std::string& path,
                                                          std::string& error) {
    const std::string name = text::FromUtf8(path);
    engine::CKalvexDoc* document = m_app.Documents().Find(name);
    if (document != nullptr && (document->State().m_bRunning || document->State().m_bPaused)) {
        error = text::ToUtf8(m_translator.Translate("skrypt jest uruchomiony"));
        return nullptr;
    }
    if (document == nullptr) document = m_app.OpenScript(name, error);
    if (document == nullptr) return nullptr;
    return std::make_unique<OpenedScript>(m_app, *document);
}

}  // namespace kalvex::window
