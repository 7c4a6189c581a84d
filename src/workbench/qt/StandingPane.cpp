#include "workbench/qt/StandingPane.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QVBoxLayout>

#include "app/StandingText.h"
#include "engine/ScriptStanding.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

void ReplaceBlock(QTextDocument& document, int number, const QString& line) {
    const QTextBlock block = document.findBlockByNumber(number);
    if (block.text() == line) return;
    QTextCursor cursor(block);
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.insertText(line);
}

}  // namespace

StandingPane::StandingPane(const platform::Translator& translator, QWidget* parent)
    : QWidget(parent),
      m_noScript(Translated(translator, platform::Translatable("Nie wybrano skryptu."))),
      m_text(new QPlainTextEdit(m_noScript)) {
    const QString name = Translated(translator, platform::Translatable("Dlaczego czeka"));
    setObjectName("standingPane");
    setWindowTitle(name);
    setAccessibleName(name);
    m_text->setObjectName("standingText");
    m_text->setAccessibleName(name);
    m_text->setReadOnly(true);
    m_text->setUndoRedoEnabled(false);
    m_text->setTabChangesFocus(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_text);
    setFocusProxy(m_text);
}

void StandingPane::Show(const std::vector<std::string>& lines) {
    if (lines == m_lines) return;
    m_lines = lines;
    QStringList texts;
    for (const std::string& line : lines) texts.append(ToQt(line));
    if (texts.isEmpty()) texts.append(m_noScript);
    QTextDocument& document = *m_text->document();
    while (document.blockCount() > texts.size()) {
        QTextCursor cursor(&document);
        cursor.setPosition(document.lastBlock().position() - 1);
        cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
    }
    for (int i = 0; i < texts.size(); ++i) {
        if (i == document.blockCount()) {
            QTextCursor end(&document);
            end.movePosition(QTextCursor::End);
            end.insertBlock();
        }
        ReplaceBlock(document, i, texts[i]);
    }
}

QString StandingTip(engine::CKalvexDoc& document, int line,
                    const platform::Translator& translator) {
    if (line != document.State().m_nCurrentLine) return {};
    const engine::ScriptStanding standing = engine::GetStanding(document);
    const bool holds = standing.state != engine::StandingState::Idle &&
                       standing.state != engine::StandingState::Running &&
                       standing.state != engine::StandingState::Finished;
    return holds ? ToQt(app::FormatStandingStatus(standing, translator)) : QString();
}

}  // namespace kalvex::window
