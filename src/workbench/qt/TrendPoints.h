// The points of a trend as the rows of a table: place, value, status. Main thread.
#pragma once

#include <QAbstractTableModel>

#include "platform/Translator.h"
#include "workbench/model/TrendSeries.h"

namespace kalvex::window {

class TrendPoints final : public QAbstractTableModel {
  public:
    // Series and translator outlive the model.
    TrendPoints(const workbench::TrendSeries& series, bool isTime,
                const platform::Translator& translator, QObject* parent)
        : QAbstractTableModel(parent),
          m_series(series),
          m_isTime(isTime),
          m_translator(translator) {}

    // All points are others.
    void Renew();
    // The last one is another, or some have come behind it.
    void Extend();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    const workbench::TrendSeries& m_series;
    const bool m_isTime;
    const platform::Translator& m_translator;
    int m_count = 0;
};

}  // namespace kalvex::window
