#include "workbench/qt/DifferenceRows.h"

#include <QApplication>
#include <algorithm>
#include <optional>

#include "workbench/qt/Colours.h"
#include "workbench/qt/Texts.h"

namespace kalvex::window {

namespace {

using platform::Translatable;
using workbench::DifferenceKind;
using workbench::DifferenceRow;

constexpr const char* kColumns[] = {
    "",
    Translatable("Linia"),
    Translatable("Wersja"),
    Translatable("Linia"),
    Translatable("Obecny tekst"),
};

struct KindRow {
    DifferenceKind kind;
    const char* sign;
    const char* words;  // for those who hear it
    std::optional<Shade> shade;
};

constexpr KindRow kKinds[] = {
    {DifferenceKind::Same, "", Translatable("bez różnicy"), std::nullopt},
    {DifferenceKind::Changed, "~", Translatable("zmieniona"), Shade{0xfff3c4, 0x5c4a00}},
    {DifferenceKind::Removed, "-", Translatable("tylko w wersji"), Shade{0xffdcd9, 0x652220}},
    {DifferenceKind::Added, "+", Translatable("tylko w obecnym tekście"),
     Shade{0xd6f5d6, 0x1f4d24}},
};

const KindRow& RowOf(DifferenceKind kind) {
    return *std::ranges::find(kKinds, kind, &KindRow::kind);
}

QString LineText(int line) {
    return line < 0 ? QString() : QString::number(line + 1);
}

}  // namespace

void DifferenceRows::Show(std::unique_ptr<workbench::TextDifference> difference) {
    beginResetModel();
    m_difference = std::move(difference);
    endResetModel();
}

int DifferenceRows::rowCount(const QModelIndex& parent) const {
    if (parent.isValid() || m_difference == nullptr) return 0;
    return static_cast<int>(m_difference->Rows().size());
}

int DifferenceRows::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QString DifferenceRows::TextOf(const DifferenceRow& row, int column) const {
    switch (column) {
        case LeftLine:
            return LineText(row.left);
        case RightLine:
            return LineText(row.right);
        case LeftText:
            return row.left < 0 ? QString() : ToQt(m_difference->Left(row.left));
        case RightText:
            return row.right < 0 ? QString() : ToQt(m_difference->Right(row.right));
        default:
            return RowOf(row.kind).sign;
    }
}

QVariant DifferenceRows::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const DifferenceRow& row = m_difference->Rows()[static_cast<std::size_t>(index.row())];
    const KindRow& kind = RowOf(row.kind);
    switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            return TextOf(row, index.column());
        case Qt::AccessibleTextRole:
            return index.column() == Sign ? Translated(m_translator, kind.words)
                                          : TextOf(row, index.column());
        case Qt::BackgroundRole:
            return kind.shade ? QVariant(ColourOf(*kind.shade, QApplication::palette()))
                              : QVariant();
        default:
            return {};
    }
}

QVariant DifferenceRows::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    return section == Sign ? QString() : Translated(m_translator, kColumns[section]);
}

}  // namespace kalvex::window
