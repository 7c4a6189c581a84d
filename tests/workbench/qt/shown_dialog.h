// A dialog that another shows, as a person meets it.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <functional>

namespace kalvex::window {

// Does this with the next modal dialog once it is shown; it has to end it.
inline void WithNextDialog(std::function<void(QDialog&)> work) {
    QTimer::singleShot(0, qApp, [work = std::move(work)] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        work(*dialog);
    });
}

// A child of that object name.
template <class Widget>
Widget& Child(const QWidget& parent, const char* name) {
    auto* child = parent.findChild<Widget*>(QLatin1String(name));
    if (child == nullptr) {
        ADD_FAILURE() << name;
        std::abort();
    }
    return *child;
}

}  // namespace kalvex::window
