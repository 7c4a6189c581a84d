#include "workbench/qt/ScheduleDialog.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "workbench/qt/Colours.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

using platform::Translatable;

constexpr const char* kColumns[] = {
    Translatable("Nr"),     Translatable("Data i godzina"),
    Translatable("Strefa"), Translatable("Dzień tygodnia"),
    Translatable("Uwagi"),
};

constexpr Shade kClocksChange{0xfff3c4, 0x5c4a00};

QLabel* MakeLabel(const QString& text, const QString& name, const char* objectName) {
    auto* label = new QLabel(text);
    label->setObjectName(objectName);
    label->setAccessibleName(name.isEmpty() ? text : name + ": " + text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

}  // namespace

ScheduleDialog::ScheduleDialog(const workbench::ScheduleProof& proof, const std::string& line,
                               const platform::Translator& translator, QWidget* parent)
    : QDialog(parent), m_text(ToQt(line) + '\n') {
    setObjectName("scheduleDialog");
    setWindowTitle(Translated(translator, Translatable("Terminy")));
    QStringList remarks;
    for (const std::string& remark : proof.remarks) remarks.append(ToQt(remark));
    if (!remarks.isEmpty()) m_text += remarks.join('\n') + '\n';
    QTableWidget* table = MakeTable(proof, translator);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        MakeLabel(ToQt(line), Translated(translator, Translatable("Linia")), "scheduleLine"));
    if (!remarks.isEmpty()) {
        auto* label = MakeLabel(remarks.join('\n'), {}, "scheduleRemarks");
        QFont font = label->font();
        font.setBold(proof.never);
        label->setFont(font);
        layout->addWidget(label);
    }
    layout->addWidget(table, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton* copy = buttons->addButton(Translated(translator, Translatable("&Kopiuj")),
                                           QDialogButtonBox::ActionRole);
    copy->setObjectName("scheduleCopy");
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(copy, &QPushButton::clicked, this,
            [this] { QApplication::clipboard()->setText(m_text); });
    resize(760, 520);
    table->setFocus();
}

QTableWidget* ScheduleDialog::MakeTable(const workbench::ScheduleProof& proof,
                                        const platform::Translator& translator) {
    auto* table = new QTableWidget(static_cast<int>(proof.firings.size()),
                                   static_cast<int>(std::size(kColumns)));
    table->setObjectName("scheduleTable");
    table->setAccessibleName(windowTitle());
    QStringList headings;
    for (const char* const column : kColumns) headings.append(Translated(translator, column));
    table->setHorizontalHeaderLabels(headings);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setTabKeyNavigation(false);
    int row = 0;
    int number = 0;
    QStringList lines;
    for (const workbench::ScheduleFiring& firing : proof.firings) {
        const QStringList texts{firing.fires ? QString::number(++number) : QString("-"),
                                ToQt(firing.date), ToQt(firing.zone), ToQt(firing.day),
                                ToQt(firing.note)};
        for (int column = 0; column < texts.size(); ++column) {
            auto* item = new QTableWidgetItem(texts[column]);
            item->setToolTip(texts[column]);
            if (firing.clocksChange) item->setBackground(ColourOf(kClocksChange, table->palette()));
            table->setItem(row, column, item);
        }
        lines.append(texts.join('\t'));
        ++row;
    }
    table->resizeColumnsToContents();
    if (row > 0) table->setCurrentCell(0, 0);
    if (row > 0) m_text += lines.join('\n') + '\n';
    return table;
}

}  // namespace kalvex::window
