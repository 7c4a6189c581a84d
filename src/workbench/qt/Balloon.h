// A notification of the desktop that can be clicked. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <functional>

namespace kalvex::window {

class Balloon final : public QObject {
    Q_OBJECT

  public:
    // `clicked` is called when the person chooses the notification itself.
    explicit Balloon(std::function<void()> clicked);

    // Takes the place of the last one; nothing happens on a desktop without notifications. The
    // action is what a screen reader reads of it.
    void Show(const QString& title, const QString& text, const QString& action);
    void Close();

  private Q_SLOTS:
    void OnAction(uint id, const QString& action);

  private:
    const std::function<void()> m_clicked;
    uint m_id = 0;  // 0: none has been shown
};

}  // namespace kalvex::window
