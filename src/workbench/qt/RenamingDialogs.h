// The person and the documents of the window, for the renaming of variables. Main thread.
#pragma once

#include <QWidget>

#include "app/KalvexApp.h"
#include "app/NameReplacement.h"

namespace kalvex::window {

class RenamingDialogs final : public app::RenamingDesk {
  public:
    // All of it outlives the renaming.
    RenamingDialogs(app::CKalvexApp& app, const platform::Translator& translator, QWidget& parent)
        : m_app(app), m_translator(translator), m_parent(parent) {}

    std::optional<std::string> AskForFile(std::string_view filter) override;
    std::optional<std::string> AskForFolder(std::string_view title) override;
    // One that is in a run has another text than its file, and is not opened.
    std::unique_ptr<app::RenamedScript> Open(const std::string& path, std::string& error) override;

  private:
    app::CKalvexApp& m_app;
    const platform::Translator& m_translator;
    QWidget& m_parent;
};

}  // namespace kalvex::window
