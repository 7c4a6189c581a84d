// A table whose rows are selected as a whole and whose cells nobody edits in place. Main thread.
#pragma once

#include <QString>
#include <QStringList>
#include <QTableWidget>
#include <vector>

namespace kalvex::window {

class RowTable : public QTableWidget {
  public:
    RowTable(const QString& name, const QStringList& headers, QWidget* parent);

    void SetRows(const std::vector<QStringList>& rows);
    // From 0, ascending.
    std::vector<std::size_t> GetSelectedRows() const;
    // The first of them is the current one and comes into sight.
    void SelectRows(const std::vector<std::size_t>& rows);

    QSize sizeHint() const override;
};

}  // namespace kalvex::window
