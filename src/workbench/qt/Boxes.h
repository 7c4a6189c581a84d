// Boxes with a text and an answer. They stop the person, not the process: ticks go on behind them.
// Main thread.
#pragma once

#include <QString>
#include <QWidget>

namespace kalvex::window {

enum class BoxKind { Message, Table, YesNo, YesNoCancel };  // a table has its columns by blanks
enum class BoxAnswer { Yes, No, Cancel };

// A message and a table answer with Yes. Escape is No to a question, and Cancel where it can be.
BoxAnswer ShowBox(QWidget* parent, BoxKind kind, const QString& text);

}  // namespace kalvex::window
