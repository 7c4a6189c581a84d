#include "workbench/qt/TrendPicture.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "workbench/qt/Colours.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr Shade kLine{0x0b5cad, 0x6cb6ff};
constexpr Shade kCursor{0xb3261e, 0xff8a80};
constexpr Shade kGrid{0xd8d8d8, 0x4a4a4a};
constexpr double kDot = 2;
constexpr double kLabelGap = 6;

}  // namespace

TrendColours TrendColoursOf(const QPalette& palette) {
    return {palette.color(QPalette::Base), palette.color(QPalette::Text), ColourOf(kGrid, palette),
            ColourOf(kLine, palette), ColourOf(kCursor, palette)};
}

TrendColours LightTrendColours() {
    return {Qt::white, Qt::black, QColor(kGrid.light), QColor(kLine.light), QColor(kCursor.light)};
}

// The axes as they lie on the device.
struct TrendPicture::Frame {
    QRectF area;
    double from;
    double to;
    workbench::TrendRange values;

    double X(double place) const {
        return area.left() + (place - from) / (to - from) * area.width();
    }
    double Y(double value) const {
        return area.bottom() - (value - values.low) / (values.high - values.low) * area.height();
    }
};

QRectF TrendPicture::PlotArea(const QRectF& whole, const QFont& font) {
    const QFontMetricsF metrics(font);
    const double height = metrics.height();
    return whole.adjusted(metrics.horizontalAdvance("-000000.00") + kLabelGap, height * 1.8,
                          -height, -(2 * height + kLabelGap));
}

void TrendPicture::Paint(QPainter& painter, const QRectF& whole) const {
    painter.fillRect(whole, colours.background);
    const QRectF area = PlotArea(whole, painter.font());
    if (area.width() < 2 || area.height() < 2) return;
    const workbench::TrendRange values = workbench::WithMargin(
        series.ValuesBetween(view.From(), view.To()).value_or(workbench::TrendRange{0, 1}));
    const Frame frame{area, view.From(), view.To(), values};
    painter.setPen(colours.text);
    painter.drawText(
        QRectF(whole.left() + kLabelGap, whole.top(), whole.width(), area.top() - whole.top()),
        Qt::AlignLeft | Qt::AlignVCenter, title);
    PaintValueAxis(painter, frame);
    PaintPlaceAxis(painter, frame);
    painter.save();
    painter.setClipRect(area.adjusted(-kDot, -kDot, kDot, kDot));
    PaintLine(painter, frame);
    PaintCursor(painter, frame);
    painter.restore();
    painter.setPen(colours.text);
    painter.drawRect(area);
}

void TrendPicture::PaintValueAxis(QPainter& painter, const Frame& frame) const {
    const QFontMetricsF metrics(painter.font());
    const int most = std::max(2, static_cast<int>(frame.area.height() / (metrics.height() * 3)));
    for (const auto& step : workbench::ValueSteps(frame.values.low, frame.values.high, most)) {
        const double y = frame.Y(step.place);
        painter.setPen(colours.grid);
        painter.drawLine(QPointF(frame.area.left(), y), QPointF(frame.area.right(), y));
        painter.setPen(colours.text);
        const QString label = ToQt(step.label);
        painter.drawText(QPointF(frame.area.left() - kLabelGap - metrics.horizontalAdvance(label),
                                 y + metrics.ascent() / 2 - 1),
                         label);
    }
}

void TrendPicture::PaintPlaceAxis(QPainter& painter, const Frame& frame) const {
    const QFontMetricsF metrics(painter.font());
    const double widest = metrics.horizontalAdvance("0000-00-00 CEST");
    const int most = std::max(2, static_cast<int>(frame.area.width() / widest));
    const auto steps = isTime ? workbench::TimeSteps(std::llround(std::ceil(frame.from)),
                                                     std::llround(std::floor(frame.to)), most)
                              : workbench::ValueSteps(frame.from + 1, frame.to + 1, most);
    for (const workbench::TrendStep& step : steps) {
        // People count elements from 1.
        const double x = frame.X(isTime ? step.place : step.place - 1);
        painter.setPen(colours.grid);
        painter.drawLine(QPointF(x, frame.area.top()), QPointF(x, frame.area.bottom()));
        painter.setPen(colours.text);
        painter.drawText(QRectF(x - widest, frame.area.bottom() + kLabelGap / 2, 2 * widest,
                                2 * metrics.height()),
                         Qt::AlignHCenter | Qt::AlignTop, ToQt(step.label));
    }
}

void TrendPicture::PaintLine(QPainter& painter, const Frame& frame) const {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours.line, 1.5));
    painter.setBrush(colours.line);
    const int columns = std::max(1, static_cast<int>(frame.area.width()));
    for (const workbench::TrendStroke& stroke : series.Strokes(frame.from, frame.to, columns)) {
        QPolygonF points;
        points.reserve(static_cast<int>(stroke.size()));
        for (const workbench::TrendPosition& position : stroke)
            points.append(QPointF(frame.X(position.x), frame.Y(position.value)));
        if (points.size() == 1) {
            painter.drawEllipse(points.first(), kDot, kDot);
        } else {
            painter.drawPolyline(points);
        }
    }
}

void TrendPicture::PaintCursor(QPainter& painter, const Frame& frame) const {
    if (!cursor || *cursor >= series.Points().size()) return;
    const workbench::TrendPoint& point = series.Points()[*cursor];
    const double x = frame.X(static_cast<double>(point.x));
    painter.setPen(QPen(colours.cursor, 1, Qt::DashLine));
    painter.drawLine(QPointF(x, frame.area.top()), QPointF(x, frame.area.bottom()));
    if (!point.good) return;
    painter.setPen(QPen(colours.cursor, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QPointF(x, frame.Y(point.value)), 2 * kDot, 2 * kDot);
}

}  // namespace kalvex::window
