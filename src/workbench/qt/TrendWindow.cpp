#include "workbench/qt/TrendWindow.h"

#include <QAccessible>
#include <QBuffer>
#include <QComboBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSvgGenerator>
#include <QTabWidget>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/Files.h"
#include "text/CodePage.h"
#include "text/TextFormat.h"
#include "workbench/model/TrendCsv.h"
#include "workbench/model/TrendScale.h"
#include "workbench/qt/Texts.h"
#include "workbench/qt/TrendPlot.h"
#include "workbench/qt/TrendPoints.h"

namespace kalvex::window {

namespace {

using platform::Translatable;

struct RangeRow {
    int seconds;
    const char* words;
};

constexpr RangeRow kRanges[] = {
    {3600, Translatable("Ostatnia godzina")},      {8 * 3600, Translatable("Ostatnie 8 godzin")},
    {86400, Translatable("Ostatnia doba")},        {7 * 86400, Translatable("Ostatni tydzień")},
    {31 * 86400, Translatable("Ostatni miesiąc")}, {366 * 86400, Translatable("Ostatni rok")},
};

constexpr const char* kFilters =
    Translatable("Obraz PNG (*.png);;Rysunek SVG (*.svg);;Arkusz CSV (*.csv)");
constexpr const char* kNotSaved = Translatable("Nie można zapisać trendu w pliku %s (%s)");
constexpr const char* kOtherForm =
    Translatable("Nazwa pliku musi kończyć się na .png, .svg albo .csv: %s");
constexpr const char* kCursorText = Translatable("%s: %s, punkt %s z %s");
constexpr const char* kNoCursor = Translatable("Kursor: strzałki w lewo i w prawo");
constexpr const char* kNoPoints = Translatable("Brak punktów");

// What was asked for may be thinned; a view so much narrower is worth asking for its own points.
constexpr int kCoarse = 8;
constexpr int kSettled = 300;  // milliseconds
constexpr int kSecond = 1000;
constexpr int kImageWidth = 1600;
constexpr int kImageHeight = 900;

}  // namespace

TrendWindow::TrendWindow(World world, std::unique_ptr<workbench::TrendSource> source,
                         QWidget* parent)
    : QWidget(parent),
      m_world(std::move(world)),
      m_source(std::move(source)),
      m_isTime(m_source->IsTime()),
      m_plot(new TrendPlot(m_series, m_isTime)),
      m_points(new TrendPoints(m_series, m_isTime, m_world.translator, this)),
      m_table(new QTableView),
      m_pages(new QTabWidget),
      m_range(new QComboBox),
      m_cursor(new QLabel),
      m_fault(new QLabel) {
    setObjectName("trendWindow");
    const QString title =
        Translated(m_world.translator, Translatable("Trend")) + " " + ToQt(m_source->GetName());
    setWindowTitle(title);
    setAccessibleName(title);
    MakeControls();
    Connect();
    if (m_isTime) {
        ShowRange(kRanges[0].seconds);
    } else {
        m_version = m_source->GetVersion();
        Request(0, 0, true);
    }
    OnCursor();
    setFocusProxy(m_plot);
}

TrendWindow::~TrendWindow() = default;

void TrendWindow::MakeControls() {
    const platform::Translator& translator = m_world.translator;
    m_plot->setObjectName("trendPlot");
    m_plot->setAccessibleName(Translated(translator, Translatable("Wykres")));
    m_table->setObjectName("trendTable");
    m_table->setAccessibleName(Translated(translator, Translatable("Punkty")));
    m_table->setModel(m_points);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setColumnWidth(0, QFontMetrics(font()).horizontalAdvance("0000-00-00 00:00:00 CEST-"));
    m_pages->setObjectName("trendPages");
    m_pages->addTab(m_plot, Translated(translator, Translatable("&Wykres")));
    m_pages->addTab(m_table, Translated(translator, Translatable("&Punkty")));
    m_cursor->setObjectName("trendCursor");
    m_cursor->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_fault->setObjectName("trendFault");
    m_fault->setWordWrap(true);
    m_fault->hide();

    auto* bar = new QHBoxLayout;
    m_range->setObjectName("trendRange");
    m_range->setAccessibleName(Translated(translator, Translatable("Zakres")));
    for (const RangeRow& row : kRanges)
        m_range->addItem(Translated(translator, row.words), row.seconds);
    if (m_isTime) {
        auto* label = new QLabel(Translated(translator, Translatable("Za&kres")));
        label->setBuddy(m_range);
        bar->addWidget(label);
        bar->addWidget(m_range);
    } else {
        m_range->setParent(this);
        m_range->hide();
    }
    auto* all = new QPushButton(Translated(translator, Translatable("&Całość")));
    all->setObjectName("trendAll");
    connect(all, &QPushButton::clicked, this, [this] { m_plot->ShowAll(); });
    auto* save = new QPushButton(Translated(translator, Translatable("Zapi&sz jako...")));
    save->setObjectName("trendSave");
    connect(save, &QPushButton::clicked, this, [this] { AskAndSave(); });
    bar->addWidget(all);
    bar->addWidget(save);
    bar->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(m_fault);
    layout->addWidget(m_pages, 1);
    layout->addWidget(m_cursor);
}

void TrendWindow::Connect() {
    m_plot->cursorMoved = [this] { OnCursor(); };
    m_plot->viewChanged = [this] {
        if (m_isTime) m_settled.start();
    };
    connect(m_range, &QComboBox::activated, this,
            [this](int row) { ShowRange(m_range->itemData(row).toInt()); });
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { OnRow(current.row()); });
    m_settled.setSingleShot(true);
    m_settled.setInterval(kSettled);
    connect(&m_settled, &QTimer::timeout, this, [this] { RequestSeen(); });
    connect(&m_second, &QTimer::timeout, this, [this] { ReadLive(); });
    m_second.start(kSecond);
}

QString TrendWindow::Title() const {
    const QString unit = ToQt(m_source->GetUnit());
    const QString name = ToQt(m_source->GetName());
    return unit.isEmpty() ? name : name + " [" + unit + "]";
}

// ---- points

void TrendWindow::ShowRange(int seconds) {
    const std::int64_t now = m_world.clock.Now();
    m_plot->SetView({static_cast<double>(now - seconds), static_cast<double>(now)});
    m_settled.stop();
    Request(now - seconds, now, false);
}

bool TrendWindow::IsCoarse() const {
    const std::int64_t asked = m_to - m_from;
    return asked >= workbench::kMostTrendPoints &&
           static_cast<double>(asked) > kCoarse * m_plot->View().Width();
}

// Half a width more on either side, so that a short way needs no new request.
void TrendWindow::RequestSeen() {
    const workbench::TrendView& view = m_plot->View();
    const std::int64_t now = m_world.clock.Now();
    const auto from = std::llround(std::floor(view.From()));
    const auto to = std::min<std::int64_t>(std::llround(std::ceil(view.To())), now);
    const bool isThere = from >= m_from && (to <= m_to || m_toPresent);
    if (from > to || (isThere && !IsCoarse())) return;
    const auto more = std::llround(view.Width() / 2);
    Request(from - more, std::min<std::int64_t>(to + more, now), false);
}

void TrendWindow::Request(std::int64_t from, std::int64_t to, bool showAll) {
    m_from = from;
    m_to = to;
    m_toPresent = to >= m_world.clock.Now();
    m_source->Request(from, to, [this, showAll](workbench::TrendArchive archive) {
        OnArchive(std::move(archive), showAll);
    });
}

void TrendWindow::OnArchive(workbench::TrendArchive archive, bool showAll) {
    const bool fault = static_cast<bool>(archive.fault);
    if (fault) {
        m_fault->setText(
            QString::fromStdString(platform::InWords(archive.fault, m_world.translator)));
        // What is seen next is worth another try.
        m_to = m_from - 1;
        m_toPresent = false;
    }
    m_fault->setVisible(fault);
    std::optional<double> cursor;
    if (const auto point = m_plot->GetCursor())
        cursor = static_cast<double>(m_series.Points()[*point].x);
    // What an archive has given before is still true.
    if (!fault || !m_isTime) m_series.SetArchive(std::move(archive.points));
    m_plot->SetTitle(Title());
    m_points->Renew();
    m_plot->SetCursor(cursor ? m_series.Nearest(*cursor) : std::nullopt);
    if (showAll) m_plot->ShowAll();
}

void TrendWindow::ReadLive() {
    if (const std::uint64_t version = m_source->GetVersion(); version != m_version) {
        m_version = version;
        return Request(0, 0, true);
    }
    const auto point = m_source->ReadLive(m_world.clock.Now());
    if (!point) return;
    const auto extent = m_series.Extent();
    m_series.AddLive(*point);
    m_points->Extend();
    m_plot->SetTitle(Title());
    if (extent) m_plot->FollowNewest(extent->high);
    m_plot->update();
    OnCursor();
}

// ---- cursor

QString TrendWindow::CursorText() const {
    const auto cursor = m_plot->GetCursor();
    const auto points = m_series.Points();
    const platform::Translator& translator = m_world.translator;
    if (points.empty()) return Translated(translator, kNoPoints);
    if (!cursor || *cursor >= points.size()) return Translated(translator, kNoCursor);
    const workbench::TrendPoint& point = points[*cursor];
    return ToQt(text::FormatText(translator.Translate(kCursorText),
                                 {workbench::TrendPlaceText(point, m_isTime, translator),
                                  workbench::TrendValueText(point, m_source->GetUnit(), translator),
                                  std::to_string(*cursor + 1), std::to_string(points.size())}));
}

void TrendWindow::OnCursor() {
    const QString text = CursorText();
    if (text == m_cursor->text()) return;
    m_cursor->setText(text);
    m_plot->setAccessibleDescription(text);
    QAccessibleEvent event(m_plot, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
    if (const auto cursor = m_plot->GetCursor()) {
        const int row = static_cast<int>(*cursor);
        if (m_table->currentIndex().row() != row) m_table->setCurrentIndex(m_points->index(row, 0));
    }
}

void TrendWindow::OnRow(int row) {
    if (row < 0) return;
    const auto point = static_cast<std::size_t>(row);
    if (m_plot->GetCursor() != point) m_plot->SetCursor(point);
}

// ---- files

void TrendWindow::AskAndSave() {
    const QString path = m_world.askPath(ToQt(m_source->GetName()) + ".png",
                                         Translated(m_world.translator, kFilters));
    if (!path.isEmpty()) SaveAs(path);
}

std::string TrendWindow::Render(const QString& suffix) const {
    if (suffix == "csv") {
        return workbench::TrendCsv(m_series.Points(), m_isTime, m_source->GetName(),
                                   m_source->GetUnit(), m_world.translator);
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    const QRect whole(0, 0, kImageWidth, kImageHeight);
    if (suffix == "svg") {
        QSvgGenerator drawing;
        drawing.setOutputDevice(&buffer);
        drawing.setSize(whole.size());
        drawing.setViewBox(whole);
        drawing.setTitle(windowTitle());
        QPainter painter(&drawing);
        painter.setFont(font());
        m_plot->PaintFor(painter, whole);
    } else {
        QImage image(whole.size(), QImage::Format_RGB32);
        QPainter painter(&image);
        painter.setFont(font());
        m_plot->PaintFor(painter, whole);
        painter.end();
        image.save(&buffer, "PNG");
    }
    return buffer.data().toStdString();
}

bool TrendWindow::SaveAs(const QString& path) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    const platform::Translator& translator = m_world.translator;
    if (!QStringList{"png", "svg", "csv"}.contains(suffix)) {
        m_world.tell(text::FormatText(translator.Translate(kOtherForm), {FromQt(path)}));
        return false;
    }
    std::string error;
    if (platform::WriteWholeFile(path.toStdString(), Render(suffix), error)) return true;
    m_world.tell(
        text::FormatText(translator.Translate(kNotSaved), {FromQt(path), text::FromUtf8(error)}));
    return false;
}

}  // namespace kalvex::window
