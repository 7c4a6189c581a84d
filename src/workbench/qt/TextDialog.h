// A box of a longer text: what the program is. Main thread.
#pragma once

#include <QDialog>
#include <QString>

#include "platform/Translator.h"

namespace kalvex::window {

// A text to read, select and copy, with OK below it; Escape closes as well.
class TextDialog : public QDialog {
  public:
    TextDialog(const QString& title, const QString& text, QWidget* parent = nullptr);
};

class AboutBox final : public TextDialog {
  public:
    explicit AboutBox(const QString& version, const platform::Translator& translator,
                      QWidget* parent = nullptr);
};

}  // namespace kalvex::window
