// Widgets by the names under which assistive programs find them. Main thread.
#pragma once

#include <QWidget>

namespace kalvex::window {

// The first descendant of that kind with the accessible name, null when there is none.
template <class Kind>
Kind* NamedWidget(const QWidget& parent, const QString& name) {
    for (Kind* const child : parent.findChildren<Kind*>()) {
        if (child->accessibleName() == name) return child;
    }
    return nullptr;
}

// The dialog of that object name that is open; null when there is none.
template <class Dialog>
Dialog* OpenDialog(const QWidget& parent, const QString& objectName) {
    for (Dialog* const dialog : parent.findChildren<Dialog*>(objectName)) {
        if (dialog->isVisible()) return dialog;
    }
    return nullptr;
}

}  // namespace kalvex::window
