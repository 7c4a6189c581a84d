#include "workbench/qt/TrendPlot.h"

#include <QKeyEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "workbench/qt/TrendPicture.h"

namespace kalvex::window {

namespace {

constexpr double kMostSteps = 10;  // of a wheel in one event

}  // namespace

const TrendPlot::KeyRow TrendPlot::kKeys[] = {
    {Qt::Key_Left, &TrendPlot::OnLeft},     {Qt::Key_Right, &TrendPlot::OnRight},
    {Qt::Key_PageUp, &TrendPlot::OnPageUp}, {Qt::Key_PageDown, &TrendPlot::OnPageDown},
    {Qt::Key_Home, &TrendPlot::OnHome},     {Qt::Key_End, &TrendPlot::OnEnd},
    {Qt::Key_Plus, &TrendPlot::OnPlus},     {Qt::Key_Equal, &TrendPlot::OnPlus},
    {Qt::Key_Minus, &TrendPlot::OnMinus},
};

TrendPlot::TrendPlot(const workbench::TrendSeries& series, bool isTime, QWidget* parent)
    : QWidget(parent), m_series(series), m_isTime(isTime) {
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(200, 120);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void TrendPlot::SetView(workbench::TrendRange range) {
    m_view.Show(range);
    OnViewChanged();
}

void TrendPlot::ShowAll() {
    if (const auto extent = m_series.Extent()) SetView(*extent);
}

void TrendPlot::FollowNewest(double former) {
    const auto extent = m_series.Extent();
    if (!extent || m_view.From() > former || m_view.To() < former || m_view.To() >= extent->high)
        return;
    Move((extent->high - m_view.To()) / m_view.Width());
}

void TrendPlot::SetCursor(std::optional<std::size_t> point) {
    m_cursor = point && *point < m_series.Points().size() ? point : std::nullopt;
    if (m_cursor) {
        const auto place = static_cast<double>(m_series.Points()[*m_cursor].x);
        if (place < m_view.From()) Move((place - m_view.From()) / m_view.Width());
        if (place > m_view.To()) Move((place - m_view.To()) / m_view.Width());
    }
    update();
    if (cursorMoved) cursorMoved();
}

void TrendPlot::PaintFor(QPainter& painter, const QRectF& whole) const {
    TrendPicture{m_series, m_view, m_isTime, m_title, LightTrendColours(), m_cursor}.Paint(painter,
                                                                                           whole);
}

void TrendPlot::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    TrendPicture{m_series, m_view, m_isTime, m_title, TrendColoursOf(palette()), m_cursor}.Paint(
        painter, QRectF(rect()));
    if (!hasFocus()) return;
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
}

void TrendPlot::keyPressEvent(QKeyEvent* event) {
    const auto* row = std::ranges::find(kKeys, event->key(), &KeyRow::key);
    if (row == std::end(kKeys)) return QWidget::keyPressEvent(event);
    (this->*row->action)((event->modifiers() & Qt::ControlModifier) != 0);
}

void TrendPlot::wheelEvent(QWheelEvent* event) {
    const double steps = std::clamp(event->angleDelta().y() / 120.0, -kMostSteps, kMostSteps);
    if (steps != 0) ZoomAt(std::pow(0.8, steps), PlaceAt(event->position().x()));
    event->accept();
}

void TrendPlot::mousePressEvent(QMouseEvent* event) {
    if ((event->buttons() & Qt::LeftButton) != 0)
        SetCursor(m_series.Nearest(PlaceAt(event->position().x())));
}

void TrendPlot::mouseMoveEvent(QMouseEvent* event) {
    mousePressEvent(event);
}

void TrendPlot::OnEnd(bool control) {
    if (m_series.Points().empty()) return;
    const auto newest = static_cast<double>(m_series.Points().back().x);
    if (control) return SetCursor(m_series.Points().size() - 1);
    Move((newest - m_view.To()) / m_view.Width());
}

void TrendPlot::Step(int direction, bool control) {
    if (control) return Move(0.1 * direction);
    const std::size_t count = m_series.Points().size();
    if (count == 0) return;
    if (!m_cursor) return SetCursor(m_series.Nearest((m_view.From() + m_view.To()) / 2));
    if (direction < 0 && *m_cursor == 0) return;
    SetCursor(std::min(direction < 0 ? *m_cursor - 1 : *m_cursor + 1, count - 1));
}

void TrendPlot::Move(double widths) {
    m_view.Move(widths);
    OnViewChanged();
}

void TrendPlot::ZoomAtCursor(double factor) {
    double place = (m_view.From() + m_view.To()) / 2;
    if (m_cursor) {
        const auto cursor = static_cast<double>(m_series.Points()[*m_cursor].x);
        if (cursor >= m_view.From() && cursor <= m_view.To()) place = cursor;
    }
    ZoomAt(factor, place);
}

void TrendPlot::ZoomAt(double factor, double place) {
    m_view.Zoom(factor, place);
    OnViewChanged();
}

double TrendPlot::PlaceAt(double x) const {
    const QRectF area = TrendPicture::PlotArea(QRectF(rect()), font());
    const double share = (x - area.left()) / std::max(area.width(), 1.0);
    return m_view.From() + share * m_view.Width();
}

void TrendPlot::OnViewChanged() {
    update();
    if (viewChanged) viewChanged();
}

}  // namespace kalvex::window
