#include "workbench/qt/ScriptFrames.h"

#include <QFileInfo>
#include <QMdiSubWindow>
#include <QPointer>
#include <algorithm>
#include <utility>

#include "text/TextFormat.h"
#include "workbench/model/ScriptTitle.h"
#include "workbench/qt/FramePlacing.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kNewTitle = platform::Translatable("Skrypt%d");
constexpr const char* kVariablesPrefix = platform::Translatable("Zmienne ");
constexpr const char* kReadOnlyMark = platform::Translatable(" [tylko do odczytu]");

}  // namespace

struct ScriptFrames::Entry {
    QString newTitle;  // of a script without a file
    CChildFrame* frame = nullptr;
    QPointer<QMdiSubWindow> variablesFrame;
    QPointer<CVariablesView> variables;
};

ScriptFrames::ScriptFrames(QMdiArea& area, const platform::Translator& translator,
                           FramesCalls calls)
    : m_area(area), m_translator(translator), m_calls(std::move(calls)) {
    m_soonTimer.setSingleShot(true);
    QObject::connect(&m_soonTimer, &QTimer::timeout, &m_area, [this] {
        for (engine::CKalvexDoc* document : std::exchange(m_soon, {})) {
            CChildFrame& frame = FrameOf(*document);
            if (m_calls.isShown(frame)) frame.Apply();
        }
    });
}

ScriptFrames::~ScriptFrames() = default;

// ---- documents

void ScriptFrames::Add(engine::CKalvexDoc& document) {
    auto entry = std::make_unique<Entry>();
    if (document.GetPathName().empty()) {
        entry->newTitle = ToQt(
            text::FormatText(m_translator.Translate(kNewTitle), {std::to_string(++m_newScripts)}));
    }
    workbench::DocumentModel& model = m_app->Documents().ModelOf(document);
    FrameCalls calls;
    calls.close = [this, &document] { m_calls.close(document); };
    calls.minimised = [this, &document](bool minimised) { m_calls.minimised(document, minimised); };
    calls.editor = m_calls.editorCalls(document);
    const EditorRole role = m_app->IsConsoleClient() ? EditorRole::Console : EditorRole::Module;
    entry->frame = new CChildFrame(document, model, m_translator, role, m_finds, std::move(calls));
    entry->frame->SetLook(m_editorLook);
    model.SetListener([this, &document](workbench::DocumentNews news) { OnNews(document, news); });
    m_area.addSubWindow(entry->frame);
    m_entries.emplace(&document, std::move(entry));
    m_order.push_back(&document);
    UpdateTitle(document);
    CChildFrame& frame = FrameOf(document);
    const auto place = m_look->GetPlace(ToQt(document.GetPathName()));
    if (place) {
        frame.SetPlace(*place);
    } else {
        frame.resize(m_area.viewport()->size() * 3 / 4);
    }
}

void ScriptFrames::Remove(engine::CKalvexDoc& document) {
    Entry& entry = *m_entries.at(&document);
    m_app->Documents().ModelOf(document).SetListener({});
    CloseVariables(document);
    if (!document.GetPathName().empty()) {
        m_look->SetPlace(ToQt(document.GetPathName()), entry.frame->GetPlace());
    }
    m_soon.erase(&document);
    m_area.removeSubWindow(entry.frame);
    entry.frame->hide();
    entry.frame->deleteLater();
    entry.frame->DropEditor();
    std::erase(m_order, &document);
    m_entries.erase(&document);
}

CChildFrame& ScriptFrames::FrameOf(const engine::CKalvexDoc& document) const {
    return *m_entries.at(&document)->frame;
}

engine::CKalvexDoc* ScriptFrames::DocumentOf(const QMdiSubWindow* frame) const {
    if (frame == nullptr) return nullptr;
    for (const auto& row : m_entries) {
        const Entry& entry = *row.second;
        if (entry.frame == frame || entry.variablesFrame == frame) return &entry.frame->Document();
    }
    return nullptr;
}

bool ScriptFrames::IsVariables(const QMdiSubWindow* frame) const {
    return frame != nullptr && std::ranges::any_of(m_entries, [frame](const auto& row) {
               return row.second->variablesFrame == frame;
           });
}

std::vector<CChildFrame*> ScriptFrames::All() const {
    std::vector<CChildFrame*> frames;
    for (const engine::CKalvexDoc* document : m_order) frames.push_back(&FrameOf(*document));
    return frames;
}

void ScriptFrames::Activate(const engine::CKalvexDoc& document) {
    CChildFrame& frame = FrameOf(document);
    if (frame.isMinimized()) frame.showNormal();
    frame.NeedEditor();
    frame.show();
    m_area.setActiveSubWindow(&frame);
    frame.Editor()->setFocus();
}

// ---- variables

bool ScriptFrames::HasVariables(const engine::CKalvexDoc& document) const {
    return VariablesOf(document) != nullptr;
}

CVariablesView* ScriptFrames::VariablesOf(const engine::CKalvexDoc& document) const {
    return m_entries.at(&document)->variables;
}

void ScriptFrames::ShowVariables(engine::CKalvexDoc& document) {
    Entry& entry = *m_entries.at(&document);
    if (entry.variables == nullptr) {
        std::unique_ptr<CVariablesView> window = m_calls.makeVariables(document);
        entry.variables = window.get();
        entry.variablesFrame =
            AddFrame(m_area, std::move(window), {}, {640, 300}, Qt::AlignRight | Qt::AlignBottom);
        entry.variablesFrame->setObjectName(QStringLiteral("variablesWindow"));
        UpdateTitle(document);
    }
    if (entry.variablesFrame->isMinimized()) entry.variablesFrame->showNormal();
    m_area.setActiveSubWindow(entry.variablesFrame);
    entry.variables->setFocus();
    entry.variables->Refresh();
}

void ScriptFrames::CloseVariables(const engine::CKalvexDoc& document) {
    Entry& entry = *m_entries.at(&document);
    if (entry.variablesFrame == nullptr) return;
    entry.variablesFrame->close();
    entry.variables.clear();
    entry.variablesFrame.clear();
}

void ScriptFrames::RefreshVariables(const engine::CKalvexDoc& document) {
    const auto found = m_entries.find(&document);
    if (found == m_entries.end() || found->second->variables == nullptr) return;
    found->second->variables->RefreshSoon();
}

// ---- titles

QString ScriptFrames::BaseTitle(const engine::CKalvexDoc& document) const {
    const Entry& entry = *m_entries.at(&document);
    const std::string& path = document.GetPathName();
    return path.empty() ? entry.newTitle : QFileInfo(ToQt(path)).fileName();
}

void ScriptFrames::UpdateTitle(engine::CKalvexDoc& document) {
    Entry& entry = *m_entries.at(&document);
    const engine::RunState& state = document.State();
    std::string title = FromQt(BaseTitle(document));
    if (document.IsReadOnly()) title += m_translator.Translate(kReadOnlyMark);
    const workbench::TitleSide side = !m_app->IsConsoleClient() ? workbench::TitleSide::Module
                                      : state.m_bControlAllowed ? workbench::TitleSide::Holder
                                                                : workbench::TitleSide::Reader;
    const QString shown = ToQt(workbench::ScriptTitle(title, document.GetStateWord(), side,
                                                      m_app->GetModuleName(), m_translator));
    entry.frame->SetTitle(
        shown, document.GetPathName().empty() ? BaseTitle(document) : ToQt(document.GetPathName()));
    if (entry.variablesFrame != nullptr) {
        entry.variablesFrame->setWindowTitle(Translated(m_translator, kVariablesPrefix) + shown);
    }
}

// ---- what a run changes

void ScriptFrames::OnNews(engine::CKalvexDoc& document, workbench::DocumentNews news) {
    switch (news) {
        // A stop leaves the variables as they are, and the period shows none of its values.
        case workbench::DocumentNews::Title:
            RefreshVariables(document);
            [[fallthrough]];
        case workbench::DocumentNews::ReadOnly:
            UpdateTitle(document);
            return ApplySoon(document);
        case workbench::DocumentNews::Marks:
            return ApplySoon(document);
        case workbench::DocumentNews::Variables:
            return RefreshVariables(document);
    }
}

void ScriptFrames::ApplySoon(engine::CKalvexDoc& document) {
    m_soon.insert(&document);
    m_soonTimer.start(0);
}

void ScriptFrames::SetLook(const EditorLook& look) {
    m_editorLook = look;
    for (const auto& row : m_entries) row.second->frame->SetLook(look);
}

void ScriptFrames::ShowValues(bool shown) {
    m_values = shown;
    ApplyAll();
}

// One that is seen and has something new, beginning behind the last one.
void ScriptFrames::ApplyNext() {
    for (std::size_t i = 0; i < m_order.size(); ++i) {
        m_next = (m_next + 1) % m_order.size();
        Entry& entry = *m_entries.at(m_order[m_next]);
        if (!m_calls.isShown(*entry.frame)) continue;
        if (entry.frame->ApplyIfNew(m_values)) return;
    }
}

void ScriptFrames::ApplyAll() {
    for (const auto& row : m_entries) {
        if (m_calls.isShown(*row.second->frame)) row.second->frame->Apply();
    }
}

}  // namespace kalvex::window
