// The bar below an editor that finds and replaces. Enter looks on, Shift+Enter back, Escape closes;
// what is not found is said in the bar, or in a box while the bar is not shown. Main thread.
#pragma once

#include <QStringList>
#include <QWidget>
#include <functional>

#include "platform/Translator.h"
#include "workbench/qt/TextFind.h"

class QCheckBox;
class QComboBox;
class QHBoxLayout;
class QLabel;

namespace kalvex::window {

class CKalvexEditCtrl;

// What was looked for last, which all bars share and the window stores.
struct FindMemory {
    static constexpr qsizetype kMost = 10;

    QStringList texts;  // the newest first
    FindOptions options;

    void Remember(const QString& text);
};

class FindBar final : public QWidget {
  public:
    using ShowMessage = std::function<void(const QString& text)>;

    // The editor and the memory outlive the bar. It is not shown until it is opened.
    FindBar(CKalvexEditCtrl& editor, FindMemory& memory, const platform::Translator& translator,
            ShowMessage showMessage, QWidget* parent = nullptr);

    // With what is selected in a line, and the focus in its first field.
    void Open(bool replace);
    void Close();
    // The text of the bar, or, while it is closed, the last one; false where it is not found.
    bool Find(bool forward);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QComboBox* AddField(QHBoxLayout* row, const char* polish, QWidget* parent);
    QCheckBox* AddOption(QHBoxLayout* row, const char* polish);
    FindOptions Options() const;
    bool Say(const QString& text);
    bool Prepare(const QString& what, const TextFind& find);
    void Replace();
    void ReplaceAll();

    CKalvexEditCtrl& m_editor;
    FindMemory& m_memory;
    const platform::Translator& m_translator;
    ShowMessage m_showMessage;
    QComboBox* m_what;
    QComboBox* m_by;
    QWidget* m_byRow;
    QCheckBox* m_matchCase;
    QCheckBox* m_wholeWords;
    QCheckBox* m_expression;
    QLabel* m_failure;
};

}  // namespace kalvex::window
