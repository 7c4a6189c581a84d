// Two texts side by side as the rows of a table: sign, line and text of the left, line and text of
// the right. Main thread.
#pragma once

#include <QAbstractTableModel>
#include <QPalette>
#include <memory>

#include "platform/Translator.h"
#include "workbench/model/TextDifference.h"

namespace kalvex::window {

class DifferenceRows final : public QAbstractTableModel {
  public:
    enum Column { Sign, LeftLine, LeftText, RightLine, RightText, ColumnCount };

    // The translator outlives the model.
    DifferenceRows(const platform::Translator& translator, QObject* parent)
        : QAbstractTableModel(parent), m_translator(translator) {}

    void Show(std::unique_ptr<workbench::TextDifference> difference);
    const workbench::TextDifference* Difference() const { return m_difference.get(); }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    QString TextOf(const workbench::DifferenceRow& row, int column) const;

    const platform::Translator& m_translator;
    std::unique_ptr<workbench::TextDifference> m_difference;
};

}  // namespace kalvex::window
