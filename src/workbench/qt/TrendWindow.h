// A trend in a window of its own, drawn and as a table, for the MDI area. Main thread.
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>

#include "platform/Clock.h"
#include "platform/Translator.h"
#include "workbench/model/TrendSeries.h"
#include "workbench/model/TrendSource.h"

class QComboBox;
class QLabel;
class QTableView;
class QTabWidget;

namespace kalvex::window {

class TrendPlot;
class TrendPoints;

class TrendWindow final : public QWidget {
  public:
    // All of it outlives the window.
    struct World {
        const platform::Translator& translator;
        const platform::Clock& clock;
        // Answers the path of the file to be written, or nothing.
        std::function<QString(const QString& proposed, const QString& filters)> askPath;
        std::function<void(const std::string& message)> tell;  // a box; an engine text
    };

    TrendWindow(World world, std::unique_ptr<workbench::TrendSource> source,
                QWidget* parent = nullptr);
    ~TrendWindow() override;

    // What happens each second by itself.
    void ReadLive();
    // Writes what is seen as PNG or SVG, or all points as CSV, as the name ends. False when that
    // failed, which has been told.
    bool SaveAs(const QString& path);

    // "2024-03-31 03:00:00 CEST: 12.50 bar, punkt 3 z 10", of the cursor.
    QString CursorText() const;
    // Whether what was asked for may lack values that a view so narrow could show.
    bool IsCoarse() const;

  private:
    void MakeControls();
    void Connect();
    void ShowRange(int seconds);
    void RequestSeen();
    void Request(std::int64_t from, std::int64_t to, bool showAll);
    void OnArchive(workbench::TrendArchive archive, bool showAll);
    void OnCursor();
    void OnRow(int row);
    void AskAndSave();
    std::string Render(const QString& suffix) const;
    QString Title() const;

    World m_world;
    std::unique_ptr<workbench::TrendSource> m_source;
    const bool m_isTime;
    workbench::TrendSeries m_series;
    std::int64_t m_from = 0;  // what has been requested
    std::int64_t m_to = -1;
    bool m_toPresent = false;  // live values go on from there
    std::uint64_t m_version = 0;
    TrendPlot* m_plot;
    TrendPoints* m_points;
    QTableView* m_table;
    QTabWidget* m_pages;
    QComboBox* m_range;
    QLabel* m_cursor;
    QLabel* m_fault;
    QTimer m_second;
    QTimer m_settled;  // runs while what is seen goes on changing
};

}  // namespace kalvex::window
