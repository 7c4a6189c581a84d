#include "workbench/qt/Colours.h"

#include <QApplication>

namespace kalvex::window {

namespace {

struct ColourRow {
    QPalette::ColorRole role;
    Shade shade;
};

constexpr ColourRow kColours[] = {
    {QPalette::Window, {0xFFF0F0F0, 0xFF2B2D30}},
    {QPalette::WindowText, {0xFF000000, 0xFFE6E6E6}},
    {QPalette::Base, {0xFFFFFFFF, 0xFF1E1F22}},
    {QPalette::AlternateBase, {0xFFF5F5F5, 0xFF26282B}},
    {QPalette::Text, {0xFF000000, 0xFFE6E6E6}},
    {QPalette::Button, {0xFFF0F0F0, 0xFF3A3D41}},
    {QPalette::ButtonText, {0xFF000000, 0xFFE6E6E6}},
    {QPalette::BrightText, {0xFFFFFFFF, 0xFFFFFFFF}},
    {QPalette::Highlight, {0xFF1F6FBF, 0xFF2F7FD0}},
    {QPalette::HighlightedText, {0xFFFFFFFF, 0xFFFFFFFF}},
    {QPalette::ToolTipBase, {0xFFFFFFE6, 0xFF3A3D41}},
    {QPalette::ToolTipText, {0xFF000000, 0xFFE6E6E6}},
    {QPalette::PlaceholderText, {0xFF6A6A6A, 0xFFA0A0A0}},
    {QPalette::Link, {0xFF0B5CAD, 0xFF7AB8F5}},
    {QPalette::LinkVisited, {0xFF6A3D9A, 0xFFC9A6E8}},
    {QPalette::Light, {0xFFFFFFFF, 0xFF4A4E53}},
    {QPalette::Midlight, {0xFFE4E4E4, 0xFF404347}},
    {QPalette::Mid, {0xFFB8B8B8, 0xFF55595E}},
    {QPalette::Dark, {0xFF9A9A9A, 0xFF17181A}},
    {QPalette::Shadow, {0xFF6A6A6A, 0xFF000000}},
};

constexpr QPalette::ColorRole kTexts[] = {QPalette::WindowText, QPalette::Text,
                                          QPalette::ButtonText};
constexpr Shade kDisabled{0xFF8A8A8A, 0xFF8A8D91};
constexpr int kDarkest = 128;

bool IsDark(const QColor& colour) {
    return colour.lightness() < kDarkest;
}

QPalette MakePalette(QRgb Shade::*scheme) {
    QPalette palette;
    for (const ColourRow& row : kColours) palette.setColor(row.role, QColor(row.shade.*scheme));
    for (const QPalette::ColorRole role : kTexts) {
        palette.setColor(QPalette::Disabled, role, QColor(kDisabled.*scheme));
    }
    return palette;
}

}  // namespace

QColor ColourOf(const Shade& shade, const QPalette& palette) {
    return QColor(IsDark(palette.color(QPalette::Base)) ? shade.dark : shade.light);
}

QPalette LightPalette() {
    return MakePalette(&Shade::light);
}

QPalette DarkPalette() {
    return MakePalette(&Shade::dark);
}

bool IsDesktopDark() {
    static const bool dark = IsDark(QApplication::palette().color(QPalette::Window));
    return dark;
}

}  // namespace kalvex::window
