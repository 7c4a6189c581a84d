// The drawing of a trend that a person works with: wheel, plus and minus zoom, the arrows move the
// cursor from point to point and with Ctrl by a tenth of the width, Page Up and Page Down move what
// is seen, Home shows all, End the newest. A click puts the cursor. Main thread.
#pragma once

#include <QWidget>
#include <functional>
#include <optional>

#include "workbench/model/TrendScale.h"
#include "workbench/model/TrendSeries.h"

namespace kalvex::window {

class TrendPlot final : public QWidget {
  public:
    // The series outlives the plot.
    TrendPlot(const workbench::TrendSeries& series, bool isTime, QWidget* parent = nullptr);

    const workbench::TrendView& View() const { return m_view; }
    void SetView(workbench::TrendRange range);
    void ShowAll();
    // Moves what is seen on so that the newest point stays in it, as long as it was.
    void FollowNewest(double former);

    std::optional<std::size_t> GetCursor() const { return m_cursor; }
    void SetCursor(std::optional<std::size_t> point);

    void SetTitle(const QString& title) { m_title = title; }
    // As it is seen, of this size, for a file.
    void PaintFor(QPainter& painter, const QRectF& whole) const;

    std::function<void()> cursorMoved;
    std::function<void()> viewChanged;

    QSize sizeHint() const override { return {640, 360}; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

  private:
    using Action = void (TrendPlot::*)(bool control);
    struct KeyRow {
        int key;
        Action action;
    };
    static const KeyRow kKeys[];

    void OnLeft(bool control) { Step(-1, control); }
    void OnRight(bool control) { Step(1, control); }
    void OnPageUp(bool) { Move(-0.5); }
    void OnPageDown(bool) { Move(0.5); }
    void OnHome(bool) { ShowAll(); }
    void OnEnd(bool control);
    void OnPlus(bool) { ZoomAtCursor(0.5); }
    void OnMinus(bool) { ZoomAtCursor(2); }

    void Step(int direction, bool control);
    void Move(double widths);
    void ZoomAtCursor(double factor);
    void ZoomAt(double factor, double place);
    double PlaceAt(double x) const;
    void OnViewChanged();

    const workbench::TrendSeries& m_series;
    const bool m_isTime;
    workbench::TrendView m_view;
    std::optional<std::size_t> m_cursor;
    QString m_title;
};

}  // namespace kalvex::window
