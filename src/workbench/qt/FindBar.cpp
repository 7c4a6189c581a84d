#include "workbench/qt/FindBar.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "workbench/qt/ScriptEditor.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

constexpr const char* kTitle = platform::Translatable("Znajdź");
constexpr const char* kWhat = platform::Translatable("Szukany te&kst");
constexpr const char* kBy = platform::Translatable("Zam&ień na");
constexpr const char* kMatchCase = platform::Translatable("Uwzględniaj wielkość &liter");
constexpr const char* kWholeWords = platform::Translatable("Tylko &całe słowa");
constexpr const char* kExpression = platform::Translatable("Wyrażenie re&gularne");
constexpr const char* kNext = platform::Translatable("Znajdź nas&tępny");
constexpr const char* kPrevious = platform::Translatable("Znajdź poprze&dni");
constexpr const char* kReplace = platform::Translatable("Za&mień");
constexpr const char* kReplaceAll = platform::Translatable("Zamień wsz&ystkie");
constexpr const char* kClose = platform::Translatable("Z&amknij");

constexpr const char* kNotFound = platform::Translatable("Nie znaleziono ciągu znaków: %s");
constexpr const char* kNoText = platform::Translatable("Nie podano ciągu znaków do wyszukania");
constexpr const char* kBadExpression = platform::Translatable("Błąd w wyrażeniu regularnym: %s");
constexpr const char* kReplaced = platform::Translatable("Zamieniono: %d");

QString Plain(const QString& text) {
    return QString(text).remove('&');
}

// Filled in as it stands, since the texts may hold characters that engine texts lack.
QString Filled(const platform::Translator& translator, const char* polish, const QString& value) {
    QString text = Translated(translator, polish);
    const qsizetype at = text.indexOf('%');
    return text.replace(at, 2, value);
}

int PositionOf(const QString& text, int offset) {
    return static_cast<int>(QStringView(text).left(offset).toUtf8().size());
}

int OffsetOf(const QByteArray& bytes, int position) {
    return static_cast<int>(QString::fromUtf8(bytes.left(position)).size());
}

}  // namespace

void FindMemory::Remember(const QString& text) {
    texts.removeAll(text);
    texts.prepend(text);
    while (texts.size() > kMost) texts.removeLast();
}

FindBar::FindBar(CKalvexEditCtrl& editor, FindMemory& memory,
                 const platform::Translator& translator, ShowMessage showMessage, QWidget* parent)
    : QWidget(parent),
      m_editor(editor),
      m_memory(memory),
      m_translator(translator),
      m_showMessage(std::move(showMessage)),
      m_byRow(new QWidget(this)) {
    setObjectName("findBar");
    setAccessibleName(Translated(translator, kTitle));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    layout->setSpacing(2);
    const auto button = [this](QHBoxLayout* row, const char* polish, auto run) {
        auto* const push = new QPushButton(Translated(m_translator, polish), this);
        push->setAccessibleName(Plain(push->text()));
        push->setAutoDefault(false);
        connect(push, &QPushButton::clicked, this, run);
        row->addWidget(push);
    };

    auto* first = new QHBoxLayout;
    layout->addLayout(first);
    m_what = AddField(first, kWhat, this);
    button(first, kNext, [this] { Find(true); });
    button(first, kPrevious, [this] { Find(false); });
    button(first, kClose, [this] { Close(); });

    layout->addWidget(m_byRow);
    auto* second = new QHBoxLayout(m_byRow);
    second->setContentsMargins(0, 0, 0, 0);
    m_by = AddField(second, kBy, m_byRow);
    button(second, kReplace, [this] { Replace(); });
    button(second, kReplaceAll, [this] { ReplaceAll(); });

    auto* third = new QHBoxLayout;
    layout->addLayout(third);
    m_matchCase = AddOption(third, kMatchCase);
    m_wholeWords = AddOption(third, kWholeWords);
    m_expression = AddOption(third, kExpression);
    m_failure = new QLabel(this);
    m_failure->setObjectName("findFailure");
    m_failure->setTextFormat(Qt::PlainText);
    m_failure->setWordWrap(true);
    third->addWidget(m_failure, 1);
    hide();
}

QComboBox* FindBar::AddField(QHBoxLayout* row, const char* polish, QWidget* parent) {
    auto* const label = new QLabel(Translated(m_translator, polish), parent);
    auto* const field = new QComboBox(parent);
    field->setEditable(true);
    field->setInsertPolicy(QComboBox::NoInsert);
    field->setCompleter(nullptr);
    field->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    field->setMinimumContentsLength(12);
    field->setAccessibleName(Plain(label->text()));
    field->lineEdit()->setAccessibleName(Plain(label->text()));
    field->installEventFilter(this);
    label->setBuddy(field);
    row->addWidget(label);
    row->addWidget(field, 1);
    return field;
}

QCheckBox* FindBar::AddOption(QHBoxLayout* row, const char* polish) {
    auto* const box = new QCheckBox(Translated(m_translator, polish), this);
    box->setAccessibleName(Plain(box->text()));
    row->addWidget(box);
    return box;
}

FindOptions FindBar::Options() const {
    return {m_matchCase->isChecked(), m_wholeWords->isChecked(), m_expression->isChecked()};
}

void FindBar::Open(bool replace) {
    const QString selected = m_editor.selectedText();
    const QString before = m_what->currentText();
    m_what->clear();
    m_what->addItems(m_memory.texts);
    m_what->setCurrentText(before);
    if (before.isEmpty() && !m_memory.texts.isEmpty())
        m_what->setCurrentText(m_memory.texts.front());
    if (!selected.isEmpty() && !selected.contains('\n')) m_what->setCurrentText(selected);
    m_matchCase->setChecked(m_memory.options.matchCase);
    m_wholeWords->setChecked(m_memory.options.wholeWords);
    m_expression->setChecked(m_memory.options.expression);
    m_byRow->setVisible(replace);
    m_failure->clear();
    show();
    m_what->setFocus(Qt::ShortcutFocusReason);
    m_what->lineEdit()->selectAll();
}

void FindBar::Close() {
    hide();
    m_editor.setFocus(Qt::OtherFocusReason);
}

bool FindBar::Say(const QString& text) {
    if (isVisible()) {
        m_failure->setText(text);
    } else if (m_showMessage) {
        m_showMessage(text);
    }
    return false;
}

// The text is remembered before it is looked for.
bool FindBar::Prepare(const QString& what, const TextFind& find) {
    m_failure->clear();
    if (what.isEmpty()) return Say(Translated(m_translator, kNoText));
    m_memory.Remember(what);
    m_memory.options = isVisible() ? Options() : m_memory.options;
    const QString fault = find.Fault();
    return fault.isEmpty() || Say(Filled(m_translator, kBadExpression, fault));
}

bool FindBar::Find(bool forward) {
    const bool open = isVisible();
    const QString last = m_memory.texts.isEmpty() ? QString() : m_memory.texts.front();
    const QString what = open ? m_what->currentText() : last;
    const TextFind find(what, open ? Options() : m_memory.options);
    if (!Prepare(what, find)) return false;
    const QByteArray bytes = m_editor.Bytes();
    const QString text = QString::fromUtf8(bytes);
    const auto [start, end] = m_editor.Selection();
    const auto found = forward ? find.Next(text, OffsetOf(bytes, end))
                               : find.Previous(text, OffsetOf(bytes, start));
    if (!found) return Say(Filled(m_translator, kNotFound, what));
    m_editor.Select(PositionOf(text, found->start), PositionOf(text, found->end));
    return true;
}

// What is selected is replaced when it is what is looked for, and the next one is selected.
void FindBar::Replace() {
    const QString what = m_what->currentText();
    const TextFind find(what, Options());
    if (!Prepare(what, find)) return;
    const QByteArray bytes = m_editor.Bytes();
    const QString text = QString::fromUtf8(bytes);
    const auto [start, end] = m_editor.Selection();
    const auto found = find.Next(text, OffsetOf(bytes, start));
    if (found && PositionOf(text, found->start) == start && PositionOf(text, found->end) == end) {
        const QByteArray by = find.Replacement(text, *found, m_by->currentText()).toUtf8();
        if (!m_editor.ReplaceAll({{start, end, by}})) return;
        const int behind = start + static_cast<int>(by.size());
        m_editor.Select(behind, behind);
    }
    Find(true);
}

void FindBar::ReplaceAll() {
    const QString what = m_what->currentText();
    const TextFind find(what, Options());
    if (!Prepare(what, find)) return;
    const QString text = QString::fromUtf8(m_editor.Bytes());
    std::vector<CKalvexEditCtrl::Replacement> replacements;
    int offset = 0;
    int position = 0;
    const auto positionOf = [&text, &offset, &position](int next) {
        position += static_cast<int>(QStringView(text).mid(offset, next - offset).toUtf8().size());
        offset = next;
        return position;
    };
    for (const FoundText& found : find.All(text)) {
        const int from = positionOf(found.start);
        const int to = positionOf(found.end);
        replacements.push_back(
            {from, to, find.Replacement(text, found, m_by->currentText()).toUtf8()});
    }
    if (replacements.empty()) {
        Say(Filled(m_translator, kNotFound, what));
    } else if (m_editor.ReplaceAll(replacements)) {
        Say(Filled(m_translator, kReplaced, QString::number(replacements.size())));
    }
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    Close();
}

// Of the fields, before they take it themselves.
bool FindBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
    const auto& key = static_cast<const QKeyEvent&>(*event);
    if (key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter) return false;
    Find((key.modifiers() & Qt::ShiftModifier) == 0);
    return true;
}

}  // namespace kalvex::window
