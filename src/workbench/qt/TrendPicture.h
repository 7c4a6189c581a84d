// A trend as it is drawn, on a screen and into files. Main thread.
#pragma once

#include <QColor>
#include <QPalette>
#include <QRectF>
#include <QString>
#include <optional>

#include "workbench/model/TrendScale.h"
#include "workbench/model/TrendSeries.h"

class QFont;
class QPainter;

namespace kalvex::window {

struct TrendColours {
    QColor background;
    QColor text;
    QColor grid;
    QColor line;
    QColor cursor;
};

TrendColours TrendColoursOf(const QPalette& palette);
// For files, which are looked at on paper, too.
TrendColours LightTrendColours();

struct TrendPicture {
    const workbench::TrendSeries& series;
    const workbench::TrendView& view;
    bool isTime;
    QString title;  // name and unit
    TrendColours colours;
    std::optional<std::size_t> cursor;  // the index of a point

    // Where the line is drawn within the whole.
    static QRectF PlotArea(const QRectF& whole, const QFont& font);

    // With the font and into the device of the painter.
    void Paint(QPainter& painter, const QRectF& whole) const;

  private:
    struct Frame;

    void PaintValueAxis(QPainter& painter, const Frame& frame) const;
    void PaintPlaceAxis(QPainter& painter, const Frame& frame) const;
    void PaintLine(QPainter& painter, const Frame& frame) const;
    void PaintCursor(QPainter& painter, const Frame& frame) const;
};

}  // namespace kalvex::window
