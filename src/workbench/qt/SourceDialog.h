// One data source: its name and the login for it. Main thread.
#pragma once

#include <QLineEdit>
#include <vector>

#include "app/MainWindow.h"
#include "platform/Crypt.h"
#include "platform/Translator.h"
#include "sources/ClientInterface.h"
#include "workbench/qt/FormDialog.h"

namespace kalvex::window {

class SourceDialog final : public FormDialog {
  public:
    // What outlives the dialog; the sources are all that there are.
    struct Parts {
        const std::vector<sources::CSourceDesc>& sources;
        const platform::CCrypt& crypt;
        app::MainWindow& window;
        const platform::Translator& translator;
    };

    // Of the source of that index; one behind the last is a new one. The field of the password
    // never shows one: left empty it keeps that of a source that is there.
    SourceDialog(const Parts& parts, std::size_t index, QWidget* parent = nullptr);

    // The password is in the form of CCrypt::EncryptText.
    sources::CSourceDesc GetSource() const;

    // What cannot be kept is told in a box, and the dialog stays.
    void accept() override;

  private:
    bool IsNew() const { return m_index == m_parts.sources.size(); }
    bool Refuse(const char* polish, QLineEdit& field);
    bool CheckFields();

    const Parts m_parts;
    const std::size_t m_index;
    QLineEdit* m_name;
    QLineEdit* m_user;
    QLineEdit* m_password;
};

}  // namespace kalvex::window
