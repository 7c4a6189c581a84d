#include "workbench/qt/TextFind.h"

#include <algorithm>

namespace kalvex::window {

namespace {

QRegularExpression Expression(const QString& what, const FindOptions& options) {
    QString pattern = options.expression ? what : QRegularExpression::escape(what);
    if (options.wholeWords) pattern = "(?<!\\w)(?:" + pattern + ")(?!\\w)";
    QRegularExpression::PatternOptions flags =
        QRegularExpression::MultilineOption | QRegularExpression::UseUnicodePropertiesOption;
    if (!options.matchCase) flags |= QRegularExpression::CaseInsensitiveOption;
    return QRegularExpression(pattern, flags);
}

FoundText PlaceOf(const QRegularExpressionMatch& match) {
    return {static_cast<int>(match.capturedStart()), static_cast<int>(match.capturedEnd())};
}

}  // namespace

TextFind::TextFind(const QString& what, const FindOptions& options)
    : m_expression(Expression(what, options)), m_isExpression(options.expression) {}

QString TextFind::Fault() const {
    return m_expression.isValid() ? QString() : m_expression.errorString();
}

std::vector<FoundText> TextFind::All(const QString& text) const {
    std::vector<FoundText> all;
    if (!m_expression.isValid()) return all;
    QRegularExpressionMatchIterator matches = m_expression.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        if (match.capturedLength() > 0) all.push_back(PlaceOf(match));
    }
    return all;
}

std::optional<FoundText> TextFind::Next(const QString& text, int from) const {
    if (!m_expression.isValid()) return std::nullopt;
    for (const int start : {from, 0}) {
        QRegularExpressionMatchIterator matches = m_expression.globalMatch(text, start);
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            if (match.capturedLength() > 0) return PlaceOf(match);
        }
    }
    return std::nullopt;
}

std::optional<FoundText> TextFind::Previous(const QString& text, int from) const {
    const std::vector<FoundText> all = All(text);
    if (all.empty()) return std::nullopt;
    const auto behind =
        std::ranges::find_if(all, [from](const FoundText& found) { return found.end > from; });
    return behind == all.begin() ? all.back() : *std::prev(behind);
}

QString TextFind::Replacement(const QString& text, const FoundText& found,
                              const QString& by) const {
    if (!m_isExpression) return by;
    const QRegularExpressionMatch match = m_expression.match(text, found.start);
    QString result;
    for (qsizetype at = 0; at < by.size(); ++at) {
        if (by[at] != '\\' || at + 1 == by.size()) {
            result += by[at];
            continue;
        }
        const QChar next = by[++at];
        if (next.isDigit()) {
            result += match.captured(next.digitValue());
        } else {
            result += next == 'n' ? QChar('\n') : next == 't' ? QChar('\t') : next;
        }
    }
    return result;
}

}  // namespace kalvex::window
