// Looking for a text in a text. Offsets count the characters of a QString. Any thread.
#pragma once

#include <QRegularExpression>
#include <QString>
#include <optional>
#include <vector>

namespace kalvex::window {

struct FindOptions {
    bool matchCase = false;
    bool wholeWords = false;
    bool expression = false;  // a regular expression, else the text as it stands

    bool operator==(const FindOptions&) const = default;
};

struct FoundText {
    int start = 0;
    int end = 0;
};

class TextFind {
  public:
    TextFind(const QString& what, const FindOptions& options);

    // What is wrong with the expression, and where; empty where nothing is. Nothing is found then.
    QString Fault() const;

    // The first one that starts at `from` or behind, else the first one of the text; what is empty
    // is not found.
    std::optional<FoundText> Next(const QString& text, int from) const;
    // The last one that ends at `from` or before, else the last one of the text.
    std::optional<FoundText> Previous(const QString& text, int from) const;
    std::vector<FoundText> All(const QString& text) const;

    // What takes the place of one that was found; in that of an expression \1 is its first group,
    // \0 the whole, \n and \t a line end and a tab.
    QString Replacement(const QString& text, const FoundText& found, const QString& by) const;

  private:
    QRegularExpression m_expression;
    bool m_isExpression;
};

}  // namespace kalvex::window
