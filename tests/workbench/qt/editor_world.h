// An editor of a script of its own, with a world in which the script runs. Texts are UTF-8.
#pragma once

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QtTest/QTest>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/script_world.h"
#include "workbench/qt/EditorMargins.h"
#include "workbench/qt/ScriptEditor.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

class EditorWorld : public support::ScriptWorld {
  protected:
    // Opens the script and an editor of it; the editor before is gone.
    CKalvexEditCtrl& Edit(std::string_view text, EditorRole role = EditorRole::Module) {
        Leave();
        WriteFile("main.kx", text);
        auto edited = std::make_unique<workbench::EditedText>();
        m_model = std::make_unique<workbench::DocumentModel>();
        m_model->SetText(*edited);
        m_document =
            documents
                .emplace_back(std::make_unique<engine::CKalvexDoc>(services, std::move(edited)))
                .get();
        std::string error;
        EXPECT_TRUE(m_document->Open("main.kx", error)) << error;
        m_document->SetView(m_model.get());
        ticks.Add(*m_document);
        m_editor =
            std::make_unique<CKalvexEditCtrl>(*m_document, *m_model, translator, role, Calls());
        m_editor->resize(600, 400);
        return *m_editor;
    }
    ~EditorWorld() override { Leave(); }
    void Leave() {
        m_editor.reset();
        if (m_document != nullptr) m_document->SetView(nullptr);
    }

    EditorCalls Calls() {
        EditorCalls calls;
        calls.showMessage = [this](const QString& text) { Hear("message " + text); };
        calls.toggleBreakpoint = [this](int line) { Hear("breakpoint " + QString::number(line)); };
        calls.deleteBreakpoints = [this] { Hear("no breakpoints"); };
        calls.filesDropped = [this](const QList<QUrl>& urls) {
            for (const QUrl& url : urls) Hear("dropped " + url.toString());
        };
        calls.fillTextMenu = [](QMenu& menu) { menu.addAction("text"); };
        calls.currentLineTip = [] { return QString("waits"); };
        calls.linesInserted = [this](int line, int count) {
            Hear("inserted " + QString::number(line) + " " + QString::number(count));
        };
        calls.linesDeleted = [this](int line, int count) {
            Hear("deleted " + QString::number(line) + " " + QString::number(count));
        };
        calls.openLink = [this](const QString& link) { Hear("link " + link); };
        return calls;
    }
    void Hear(const QString& what) { m_heard.push_back(what.toStdString()); }

    // As the editor has it and as the document has it, which is the same.
    std::string Text() const {
        std::string text = m_editor->Bytes().toStdString();
        std::string lines;
        for (int line = 0; line < m_document->Text().GetLineCount(); ++line) {
            if (line > 0) lines += '\n';
            lines += text::ToUtf8(m_document->Text().GetLine(line));
        }
        EXPECT_EQ(text, lines);
        return text;
    }
    std::vector<std::string> Undos() const { return Actions(workbench::UndoDirection::Undo); }
    std::vector<std::string> Redos() const { return Actions(workbench::UndoDirection::Redo); }
    std::vector<std::string> Actions(workbench::UndoDirection direction) const {
        std::vector<std::string> actions;
        for (const QString& action : m_editor->UndoDescriptions(direction)) {
            actions.push_back(action.toStdString());
        }
        return actions;
    }
    // Both lists hold exactly what the editor can do.
    void ExpectListsAgree() {
        const std::size_t undos = Undos().size();
        const std::size_t redos = Redos().size();
        const std::string end = Text();
        std::size_t done = 0;
        for (; m_editor->SendScintilla(QsciScintillaBase::SCI_CANUNDO) != 0; ++done) {
            m_editor->Undo();
        }
        EXPECT_EQ(done, undos);
        EXPECT_EQ(Undos().size(), 0u);
        m_editor->Redo(static_cast<int>(done));
        EXPECT_EQ(Undos().size(), undos);
        EXPECT_EQ(Redos().size(), redos);
        EXPECT_EQ(Text(), end);
    }
    void Type(const QString& text) {
        for (const QChar c : text) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(c));
            QApplication::sendEvent(m_editor.get(), &press);
        }
    }
    void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(m_editor.get(), key, modifiers);
    }
    void Drop(QMimeData& data) {
        const QPoint place(300, 5);
        QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_editor->viewport(), &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDragMoveEvent move(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_editor->viewport(), &move);
        QDropEvent drop(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_editor->viewport(), &drop);
    }
    // Shown, active and with the focus.
    void Activate() {
        m_editor->show();
        m_editor->activateWindow();
        m_editor->setFocus();
        EXPECT_TRUE(QTest::qWaitFor([this] { return m_editor->hasFocus(); }));
    }
    void SetCaret(int line, int column) { m_editor->GoToLine(line, column); }
    void SelectLines(int first, int last) {  // to the first character of the last one
        m_editor->setSelection(first, 0, last, 0);
    }
    std::vector<int> MarkedLines(int mark) const {
        std::vector<int> lines;
        for (int line = 0; line < m_document->Text().GetLineCount(); ++line) {
            const long marks = m_editor->SendScintilla(QsciScintillaBase::SCI_MARKERGET, line);
            if ((marks & (1L << mark)) != 0) lines.push_back(line);
        }
        return lines;
    }
    std::vector<int> Folded() const {
        std::vector<int> lines;
        for (int line = 0; line < m_document->Text().GetLineCount(); ++line) {
            if (m_editor->SendScintilla(QsciScintillaBase::SCI_GETLINEVISIBLE, line) == 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    engine::CKalvexDoc* m_document = nullptr;
    std::unique_ptr<workbench::DocumentModel> m_model;
    std::unique_ptr<CKalvexEditCtrl> m_editor;
    std::vector<std::string> m_heard;
};

}  // namespace kalvex::window
