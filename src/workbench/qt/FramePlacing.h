// Where windows in the area of the main one come up. Main thread.
#pragma once

#include <QMdiArea>
#include <QMdiSubWindow>
#include <Qt>
#include <memory>

namespace kalvex::window {

// A frame with the content, which goes with it, shown at that edge of what can be seen of the area,
// as large as it wants to be and fits.
QMdiSubWindow* AddFrame(QMdiArea& area, std::unique_ptr<QWidget> content, const QString& title,
                        QSize size, Qt::Alignment edge);

}  // namespace kalvex::window
