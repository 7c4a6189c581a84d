// The lines of the application log as rows of a list. Main thread.
#pragma once

#include <QAbstractListModel>
#include <QIcon>
#include <QString>
#include <array>
#include <cstdint>

#include "app/Log.h"
#include "platform/LogSink.h"

namespace kalvex::window {

// Rows follow the log when they are told to, and not with each line: what has come since then is
// not shown, and of what the log has dropped the rows are empty until then.
class LogLines final : public QAbstractListModel {
  public:
    // The log outlives the rows.
    explicit LogLines(const app::CLog& log, QObject* parent = nullptr);

    // To be told of each line of the log, and of its clearing.
    void OnLine() { ++m_came; }
    void OnCleared();

    // Makes the rows those of the log.
    void Follow();
    // The row of the most characters since the last clearing.
    const QString& GetLongest() const { return m_longest; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    std::uint64_t FirstKept() const { return m_came - m_log.GetCount(); }
    QString TextOf(std::uint64_t line) const;

    const app::CLog& m_log;
    // Lines are numbered from the first that the log has had.
    std::uint64_t m_came = 0;
    std::uint64_t m_first = 0;
    std::uint64_t m_end = 0;
    QString m_longest;
    std::array<QIcon, platform::LogTransmission + 1> m_icons;
};

}  // namespace kalvex::window
