// The list that drops down from the undo or the redo button: what would be taken back, the newest
// action first, and below it the count of those selected. Pointer and arrow keys select from the
// first one on, a click or Enter carries them out, Escape does nothing. Main thread.
#pragma once

#include <QStringList>
#include <QToolButton>
#include <QWidget>
#include <functional>

#include "platform/Translator.h"
#include "workbench/model/UndoActions.h"

class QLabel;
class QListWidget;

namespace kalvex::window {

class CUndoBar final : public QWidget {
  public:
    using OnChosen = std::function<void(int count)>;

    // The window whose name is "Cofnij" or "Ponów" belongs to the parent's window.
    CUndoBar(workbench::UndoDirection direction, const platform::Translator& translator,
             QWidget* parent);

    // Shows them at the place; `onChosen` is called at most once, when the bar is gone.
    void Open(const QPoint& globalTopLeft, const QStringList& actions, OnChosen onChosen);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void SelectTo(int row);
    void Choose();

    workbench::UndoDirection m_direction;
    const platform::Translator& m_translator;
    QListWidget* m_list;
    QLabel* m_count;
    OnChosen m_onChosen;
};

// A tool button whose right edge drops the list down; elsewhere it does what its action does.
class CUndoButton final : public QToolButton {
  public:
    struct Source {
        std::function<QStringList()> actions;  // the newest first
        std::function<void(int count)> carryOut;
    };

    CUndoButton(workbench::UndoDirection direction, const platform::Translator& translator,
                Source source, QWidget* parent);

    void OpenBar();
    CUndoBar& Bar() { return *m_bar; }

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    Source m_source;
    CUndoBar* m_bar;
};

}  // namespace kalvex::window
