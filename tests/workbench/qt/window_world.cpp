#include "workbench/qt/window_world.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>
#include <utility>

#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

struct ButtonRow {
    QMessageBox::StandardButton button;
    const char* word;
};

constexpr ButtonRow kButtons[] = {
    {QMessageBox::Ok, "OK"},
    {QMessageBox::Yes, "Tak"},
    {QMessageBox::No, "Nie"},
    {QMessageBox::Cancel, "Anuluj"},
};

}  // namespace

WindowTest::WindowTest() {
    std::string error;
    EXPECT_TRUE(m_userStore.Open(m_folder.Path("users"), error)) << error;
    QObject::connect(&m_answering, &QTimer::timeout, qApp, [this] { AnswerDialog(); });
    m_answering.start(0);
}

WindowTest::~WindowTest() {
    End();
    EXPECT_TRUE(m_boxes.empty()) << m_boxes.front();
    EXPECT_TRUE(m_buttons.empty()) << "a box has not come";
    EXPECT_TRUE(m_names.empty()) << "a dialog for files has not come";
    EXPECT_TRUE(m_works.empty()) << "a dialog has not come";
}

// ---- the process

bool WindowTest::Start(std::vector<std::string> arguments) {
    m_instances.emplace(m_record);
    m_vantrel.emplace(m_record);
    m_users.emplace(m_userStore, "jan");
    if (m_isTrusted) m_users->TrustAccount(m_translator);
    m_loop = std::make_unique<QtLoop>([this] { return m_microseconds; });
    m_window = std::make_unique<KalvexWindow>(
        WindowWorld{*m_loop, m_clock, m_translator, *m_users, m_userStore, m_crypt});
    app::AppWorld world{m_clock,
                        m_translator,
                        *m_loop,
                        m_profile,
                        m_crypt,
                        *m_users,
                        *m_instances,
                        platform::NoProcesses(),
                        platform::NoFiles(),
                        platform::NoProbes(),
                        *m_vantrel,
                        {&*m_vantrel}};
    world.userStore = &m_userStore;
    world.window = m_window.get();
    world.arguments = std::move(arguments);
    world.workingDir = m_folder.Path();
    world.logFolder = m_folder.Path();
    world.hostName = "stacja";
    m_app = std::make_unique<app::CKalvexApp>(world);
    m_window->SetApp(*m_app);
    if (!m_app->InitInstance()) return false;
    Settle();
    return true;
}

// In the order of the program.
void WindowTest::End() {
    if (m_app) m_app->OnEndSession(true);
    if (m_app) m_app->ExitInstance();
    m_app.reset();
    m_window.reset();
    m_loop.reset();
}

void WindowTest::Tick(int count) {
    for (int i = 0; i < count; ++i) {
        m_loop->Turn([] {});
        m_microseconds += 1000;
    }
    m_loop->Turn([] {});
}

void WindowTest::Settle() {
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

// ---- scripts

engine::CKalvexDoc* WindowTest::Find(const std::string& name) {
    return App().Documents().Find(name);
}

engine::CKalvexDoc& WindowTest::Open(const std::string& name) {
    Choose({name});
    Run(workbench::Command::Open);
    engine::CKalvexDoc* const document = Find(name);
    if (document == nullptr) {
        ADD_FAILURE() << name;
        std::abort();
    }
    Settle();
    return *document;
}

engine::CKalvexDoc& WindowTest::New() {
    Run(workbench::Command::New);
    Settle();
    return *App().Documents().All().back();
}

QMdiSubWindow& WindowTest::FrameOf(const engine::CKalvexDoc& document) {
    for (QMdiSubWindow* frame : Window().findChildren<QMdiSubWindow*>("scriptWindow")) {
        auto* const script = dynamic_cast<CChildFrame*>(frame);
        if (script != nullptr && &script->Document() == &document) return *frame;
    }
    ADD_FAILURE() << "no frame";
    std::abort();
}

CKalvexEditCtrl* WindowTest::ShownEditorOf(const engine::CKalvexDoc& document) {
    return dynamic_cast<CChildFrame&>(FrameOf(document)).Editor();
}

CKalvexEditCtrl& WindowTest::EditorOf(const engine::CKalvexDoc& document) {
    CKalvexEditCtrl* const editor = ShownEditorOf(document);
    if (editor == nullptr) {
        ADD_FAILURE() << "no editor";
        std::abort();
    }
    return *editor;
}

void WindowTest::Type(const engine::CKalvexDoc& document, const QString& text) {
    for (const QChar c : text) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(c));
        QApplication::sendEvent(&EditorOf(document), &press);
    }
}

std::string WindowTest::TitleOf(const engine::CKalvexDoc& document) {
    return FrameOf(document).windowTitle().remove("[*]").toStdString();
}

// ---- what the person does

QAction& WindowTest::ActionOf(workbench::Command command) {
    return Child<QAction>(Window(), ("command" + std::to_string(NumberOf(command))).c_str());
}

bool WindowTest::CanRun(workbench::Command command) {
    Window().UpdateToolBar();
    return ActionOf(command).isEnabled();
}

void WindowTest::Answer(std::vector<QMessageBox::StandardButton> buttons) {
    m_buttons.insert(m_buttons.end(), buttons.begin(), buttons.end());
}

void WindowTest::Choose(std::vector<std::string> names) {
    for (std::string& name : names) {
        m_names.push_back(name.empty() ? name : m_folder.Path(name));
    }
}

void WindowTest::AnswerDialog() {
    auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr || !dialog->isVisible()) return;
    if (auto* const box = qobject_cast<QMessageBox*>(dialog)) return AnswerBox(*box);
    if (qobject_cast<QFileDialog*>(dialog) != nullptr) return AnswerFiles(*dialog);
    if (m_works.empty()) {
        ADD_FAILURE() << dialog->windowTitle().toStdString();
        return dialog->reject();
    }
    const std::function<void(QDialog&)> work = std::move(m_works.front());
    m_works.pop_front();
    work(*dialog);
}

void WindowTest::AnswerBox(QMessageBox& box) {
    if (m_whileAsked) std::exchange(m_whileAsked, {})();
    std::string told = box.text().toStdString() + " |";
    for (const ButtonRow& row : kButtons) {
        if (box.button(row.button) != nullptr) told += std::string(" ") + row.word;
    }
    m_boxes.push_back(told);
    if (m_buttons.empty()) {
        if (box.standardButtons() != QMessageBox::Ok) ADD_FAILURE() << told;
        return box.escapeButton()->click();
    }
    QAbstractButton* const button = box.button(m_buttons.front());
    m_buttons.pop_front();
    ASSERT_NE(button, nullptr) << told;
    button->click();
}

void WindowTest::AnswerFiles(QDialog& dialog) {
    if (m_namedDialog == &dialog) return;
    if (m_names.empty()) {
        ADD_FAILURE() << dialog.windowTitle().toStdString();
        return dialog.reject();
    }
    const std::string name = std::exchange(m_names.front(), {});
    m_names.pop_front();
    if (name.empty()) return dialog.reject();
    // A question of the dialog is answered as well.
    QTimer::singleShot(0, &dialog, [&dialog, name] {
        auto& field = Child<QLineEdit>(dialog, "fileNameEdit");
        field.setText(QString::fromStdString(name));
        QTest::keyClick(&field, Qt::Key_Return);
    });
    m_namedDialog = &dialog;
}

std::string WindowTest::StatusOf(const char* label) {
    return Child<QLabel>(Window(), label).text().toStdString();
}

std::vector<std::string> WindowTest::LogLines() {
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < App().Log().GetCount(); ++i) {
        lines.push_back(text::ToUtf8(App().Log().GetText(i)).substr(app::kLogStampLength));
    }
    return lines;
}

}  // namespace kalvex::window
