// The list of words that drops down at the caret. It is a window of its own that takes the focus,
// so that a screen reader reads its items; what is typed goes on into the editor, and moves the
// selection to the first word that begins with it. Where no window manager gives it the focus, the
// keys of the editor reach it first. Main thread.
#pragma once

#include <QListWidget>
#include <QString>
#include <QStringList>
#include <functional>

#include "platform/Translator.h"

class QKeyEvent;
class QPoint;

namespace kalvex::window {

class CompletionList final : public QListWidget {
  public:
    // Belongs to the editor, and gives the focus back to it.
    CompletionList(QWidget* editor, const platform::Translator& translator);

    using OnChosen = std::function<void(const QString& word)>;

    // Shows the words in their order, at the place if the screen has room there. `typed` is what
    // stands before the caret already. `onChosen` is called at most once, when the list is gone;
    // what was typed meanwhile stands in the editor.
    void Open(const QPoint& globalTopLeft, const QStringList& words, OnChosen onChosen,
              const QString& typed = {});
    // Gone without a choice. Nothing happens when it is not open.
    void Dismiss();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool focusNextPrevChild(bool) override { return false; }  // Tab is a key of the list

  private:
    // Whether the key was the list's; the editor gets all others.
    bool TakeKey(const QKeyEvent& event);
    bool TakeListKey(int key);
    void FollowTyping(const QKeyEvent& event);
    void PassOn(const QKeyEvent& event);
    bool SelectTyped();
    void Choose();
    void Place(const QPoint& globalTopLeft);

    QWidget* m_editor;
    OnChosen m_onChosen;
    QString m_typed;
    bool m_passingOn = false;
};

}  // namespace kalvex::window
