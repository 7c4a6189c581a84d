// What the main window tells of a script beyond its text: why it waits, when it goes on, how its
// values went, what stands in its variables.
#include <QDockWidget>
#include <QFileDialog>
#include <QInputDialog>
#include <QMdiSubWindow>

#include "app/StandingText.h"
#include "engine/ScriptStanding.h"
#include "workbench/model/ListTrend.h"
#include "workbench/model/RemoteTrend.h"
#include "workbench/model/ScheduleProof.h"
#include "workbench/qt/FramePlacing.h"
#include "workbench/qt/KalvexWindow.h"
#include "workbench/qt/ScheduleDialog.h"
#include "workbench/qt/Texts.h"
#include "workbench/qt/TrendWindow.h"

namespace kalvex::window {

namespace {

// A pointer is drawn as the list or the remote variable that it leads to.
bool IsDrawn(operands::VariableKind kind) {
    return kind == operands::VariableList || kind == operands::VariableRemote;
}

}  // namespace

// ---- why it waits

void KalvexWindow::AddStandingDock() {
    m_standing = new StandingPane(m_translator);
    m_standingDock =
        new QDockWidget(Translated(m_translator, platform::Translatable("Dlaczego czeka")), this);
    m_standingDock->setObjectName(QStringLiteral("standingDock"));
    m_standingDock->setWidget(m_standing);
    addDockWidget(Qt::BottomDockWidgetArea, m_standingDock);
    m_standingDock->hide();
}

void KalvexWindow::ToggleStanding() {
    const bool shown = !m_standingDock->isVisible();
    m_standingDock->setVisible(shown);
    m_standingRefresh.Forget();
    if (shown) UpdateStanding();
}

void KalvexWindow::UpdateStanding() {
    if (!m_standingDock->isVisible()) return;
    engine::CKalvexDoc* const document = ActiveScript();
    if (!m_standingRefresh.IsDue(document, m_world.clock.Elapsed())) return;
    if (document == nullptr) return m_standing->Show({});
    m_standing->Show(app::FormatStandingReport(engine::GetStanding(*document), m_translator));
}

// ---- values beside the text

void KalvexWindow::ToggleValuesBeside() {
    m_valuesBeside = !m_valuesBeside;
    Look().SetOn("wartosci", m_valuesBeside);
    m_frames->ShowValues(m_valuesBeside);
}

// ---- when it goes on

void KalvexWindow::ShowSchedule() {
    engine::CKalvexDoc& document = *ActiveScript();
    const int line = ActiveEditor()->CaretLine();
    ScheduleDialog(workbench::ProveSchedule(document, line, m_world.clock.Now()),
                   std::string(document.Text().GetLine(line)), m_translator, this)
        .exec();
}

// ---- how values went

bool KalvexWindow::CanDraw(const engine::CKalvexDoc& document) const {
    for (const auto& variable : document.Variables()) {
        if (IsDrawn(variable->GetKind())) return true;
    }
    return false;
}

void KalvexWindow::ShowTrend() {
    engine::CKalvexDoc& document = *ActiveScript();
    QStringList names;
    for (const auto& variable : document.Variables()) {
        if (IsDrawn(variable->GetKind())) names.append(ToQt(variable->GetName()));
    }
    bool chosen = names.size() == 1;
    QString name = names.value(0);
    if (!chosen) {
        name = QInputDialog::getItem(
            this, Translated(m_translator, platform::Translatable("Wykres")),
            Translated(m_translator, platform::Translatable("Zmienna")), names, 0, false, &chosen);
    }
    const operands::CVariable* const variable = chosen && m_app->Documents().IsOpen(document)
                                                    ? document.Variables().Find(FromQt(name))
                                                    : nullptr;
    if (variable == nullptr) return;
    std::unique_ptr<workbench::TrendSource> source;
    if (variable->GetKind() == operands::VariableList) {
        source = std::make_unique<workbench::ListTrend>(document, FromQt(name));
    } else {
        source = std::make_unique<workbench::RemoteTrend>(document, FromQt(name));
    }
    auto trend = std::make_unique<TrendWindow>(
        TrendWindow::World{m_translator, m_world.clock,
                           [this](const QString& proposed, const QString& filters) {
                               return QFileDialog::getSaveFileName(this, {}, proposed, filters);
                           },
                           [this](const std::string& message) { ShowMessage(message); }},
        std::move(source));
    const QString title =
        Translated(m_translator, platform::Translatable("Wykres")) + QStringLiteral(" ") + name;
    QMdiSubWindow* const frame =
        AddFrame(*m_area, std::move(trend), title, {760, 420}, Qt::AlignRight | Qt::AlignTop);
    frame->setObjectName(QStringLiteral("trendWindow"));
    m_trends[&document].append(frame);
}

// A trend reads the script's variables, so it goes with the script.
void KalvexWindow::CloseTrends(const engine::CKalvexDoc& document) {
    for (const QPointer<QMdiSubWindow>& frame : m_trends[&document]) delete frame;
    m_trends.erase(&document);
}

}  // namespace kalvex::window
