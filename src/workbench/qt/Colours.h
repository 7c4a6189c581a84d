// The colours of the window's schemes, light and dark. Main thread.
#pragma once

#include <QColor>
#include <QPalette>

namespace kalvex::window {

struct Shade {
    QRgb light;
    QRgb dark;
};

// The one that is readable on the base colour of the palette.
QColor ColourOf(const Shade& shade, const QPalette& palette);

QPalette LightPalette();
QPalette DarkPalette();
// Whether the desktop that the program was begun on is dark; asked for once before any palette is
// set.
bool IsDesktopDark();

}  // namespace kalvex::window
