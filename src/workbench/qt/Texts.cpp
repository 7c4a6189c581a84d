#include "workbench/qt/Texts.h"

#include "text/CodePage.h"

namespace kalvex::window {

QString ToQt(std::string_view engineText) {
    return QString::fromStdString(text::ToUtf8(engineText));
}

std::string FromQt(const QString& text) {
    return text::FromUtf8(text.toStdString());
}

}  // namespace kalvex::window
