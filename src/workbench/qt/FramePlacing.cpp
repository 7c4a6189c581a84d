#include "workbench/qt/FramePlacing.h"

#include <QStyle>

namespace kalvex::window {

QMdiSubWindow* AddFrame(QMdiArea& area, std::unique_ptr<QWidget> content, const QString& title,
                        QSize size, Qt::Alignment edge) {
    auto* const frame = new QMdiSubWindow;
    frame->setAttribute(Qt::WA_DeleteOnClose);
    frame->setWidget(content.release());
    frame->setWindowTitle(title);
    area.addSubWindow(frame);
    frame->show();
    if (frame->isMaximized()) return frame;
    const QRect seen = area.viewport()->rect();
    frame->setGeometry(
        QStyle::alignedRect(area.layoutDirection(), edge, size.boundedTo(seen.size()), seen));
    return frame;
}

}  // namespace kalvex::window
