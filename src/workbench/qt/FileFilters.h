// The filters of file dialogs.
#pragma once

#include <QString>

namespace kalvex::window {

// A filter of names and patterns in turn, "|" behind each, as the toolkit has it. With the option
// QFileDialog::HideNameFilterDetails the names are shown as they were. "*.*" means all files.
QString ToFileFilter(const QString& filter);

}  // namespace kalvex::window
