#include "workbench/qt/FileFilters.h"

#include <QStringList>

namespace kalvex::window {

QString ToFileFilter(const QString& filter) {
    const QStringList parts = filter.split(QLatin1Char('|'), Qt::SkipEmptyParts);
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString pattern =
            parts[i + 1] == QLatin1String("*.*") ? QStringLiteral("*") : parts[i + 1];
        filters += parts[i] + QStringLiteral(" (") + pattern + QLatin1Char(')');
    }
    return filters.join(QLatin1String(";;"));
}

}  // namespace kalvex::window
