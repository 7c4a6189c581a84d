// A title and one number. Main thread.
#pragma once

#include <QLineEdit>
#include <optional>

#include "platform/Translator.h"
#include "workbench/qt/FormDialog.h"

namespace kalvex::window {

class CLineDlg final : public FormDialog {
  public:
    // The number is selected, so that what is typed takes its place.
    CLineDlg(const QString& title, const platform::Translator& translator, int number,
             QWidget* parent = nullptr);

    // At least 0; nothing while none is given.
    std::optional<int> GetNumber() const;

    // Shows the dialog; nothing when the person wants none.
    static std::optional<int> Ask(const QString& title, const platform::Translator& translator,
                                  int number, QWidget* parent);

  private:
    QLineEdit* m_field;
};

}  // namespace kalvex::window
