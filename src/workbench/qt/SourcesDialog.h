// The logins of data servers. Main thread.
#pragma once

#include <QPushButton>
#include <vector>

#include "workbench/qt/FormDialog.h"
#include "workbench/qt/RowTable.h"
#include "workbench/qt/SourceDialog.h"

namespace kalvex::window {

class SourcesDialog final : public FormDialog {
  public:
    // Passwords are in the form of CCrypt::EncryptText, in and out. What is referred to outlives
    // the dialog.
    SourcesDialog(std::vector<sources::CSourceDesc> sources, const platform::CCrypt& crypt,
                  app::MainWindow& window, const platform::Translator& translator,
                  QWidget* parent = nullptr);

    // As the person left them; they count when the dialog was accepted.
    const std::vector<sources::CSourceDesc>& GetSources() const { return m_sources; }

  private:
    void Add();
    void Change();
    void Remove();
    void Show(const std::vector<std::size_t>& selected);
    void UpdateButtons();
    QPushButton* AddButton(const char* polish, const char* name, void (SourcesDialog::*run)());
    void Edit(std::size_t index);

    std::vector<sources::CSourceDesc> m_sources;
    const SourceDialog::Parts m_parts;
    RowTable* m_table;
    QPushButton* m_change = nullptr;
    QPushButton* m_remove = nullptr;
};

}  // namespace kalvex::window
