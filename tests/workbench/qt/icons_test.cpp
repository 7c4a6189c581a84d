#include "workbench/qt/Icons.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>
#include <set>

namespace kalvex::window {
namespace {

int DrawnPixels(const QImage& image) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) count += qAlpha(image.pixel(x, y)) > 0 ? 1 : 0;
    }
    return count;
}

TEST(IconsTest, EachIconHasOneDrawing) {
    std::set<IconId> ids;
    for (const IconRow& row : IconTable()) EXPECT_TRUE(ids.insert(row.id).second);
    for (int id = 0; id <= static_cast<int>(IconId::Help); ++id) {
        EXPECT_TRUE(ids.contains(static_cast<IconId>(id))) << id;
    }
}

TEST(IconsTest, EachDrawingIsSvg) {
    for (const IconRow& row : IconTable()) {
        const QByteArray svg = SvgOf(row.id, Qt::black);
        EXPECT_TRUE(QSvgRenderer(svg).isValid()) << svg.constData();
        EXPECT_FALSE(svg.contains('@')) << svg.constData();
    }
}

TEST(IconsTest, EachIconIsDrawnAtTheSizeThatIsWanted) {
    for (const IconRow& row : IconTable()) {
        for (const int side : {16, 48}) {
            const QImage image = MakeIcon(row.id).pixmap(side, side).toImage();
            EXPECT_EQ(image.width(), side);
            EXPECT_GT(DrawnPixels(image), side) << static_cast<int>(row.id);
        }
    }
}

TEST(IconsTest, NoTwoDrawingsOfTheLogLookAlike) {
    std::set<QByteArray> drawings;
    for (const IconId id : {IconId::Log0, IconId::Log1, IconId::Log2, IconId::Log3}) {
        EXPECT_TRUE(drawings.insert(SvgOf(id, Qt::black)).second);
    }
    const QImage highest = LogIcon(3).pixmap(16, 16).toImage();
    EXPECT_EQ(LogIcon(7).pixmap(16, 16).toImage(), highest);
    EXPECT_NE(LogIcon(2).pixmap(16, 16).toImage(), highest);
    EXPECT_EQ(LogIcon(-1).pixmap(16, 16).toImage(), LogIcon(0).pixmap(16, 16).toImage());
}

TEST(IconsTest, AnErrorChangesTheProgramsIcon) {
    EXPECT_NE(ProgramIcon(false).pixmap(32, 32).toImage(),
              ProgramIcon(true).pixmap(32, 32).toImage());
}

TEST(IconsTest, MarksHaveTheirColours) {
    const QImage disc = MakeIcon(IconId::Breakpoint).pixmap(32, 32).toImage();
    EXPECT_EQ(disc.pixelColor(16, 16), QColor(0x7F, 0, 0));
    const QImage arrow = MakeIcon(IconId::CurrentLine).pixmap(32, 32).toImage();
    EXPECT_EQ(arrow.pixelColor(16, 16), QColor(0xFF, 0xD8, 0));
    const QImage flag = MakeIcon(IconId::Bookmark).pixmap(32, 32).toImage();
    EXPECT_EQ(flag.pixelColor(14, 8), QColor(0x2F, 0x6F, 0xD0));
}

TEST(IconsTest, LinesFollowTheColourOfTheText) {
    const QPalette kept = QGuiApplication::palette();
    const QIcon icon = MakeIcon(IconId::OutlineCollapse);
    std::vector<QColor> lines;
    for (const QColor& text : {QColor(Qt::black), QColor(Qt::white)}) {
        QPalette palette = kept;
        palette.setColor(QPalette::WindowText, text);
        QGuiApplication::setPalette(palette);
        lines.push_back(icon.pixmap(32, 32).toImage().pixelColor(16, 16));
    }
    QGuiApplication::setPalette(kept);
    EXPECT_EQ(lines[0], QColor(Qt::black));
    EXPECT_EQ(lines[1], QColor(Qt::white));
}

TEST(IconsTest, WhatCannotBeUsedIsFaint) {
    const QIcon icon = MakeIcon(IconId::Reset);
    EXPECT_EQ(icon.pixmap(32, 32).toImage().pixelColor(16, 16).alpha(), 255);
    const QImage faint = icon.pixmap(32, 32, QIcon::Disabled).toImage();
    EXPECT_EQ(faint.pixelColor(16, 16).alpha(), 102);
}

TEST(IconsTest, AnIconIsPaintedSharpOnAFineScreen) {
    QImage screen(32, 32, QImage::Format_ARGB32_Premultiplied);
    screen.fill(Qt::transparent);
    screen.setDevicePixelRatio(2);
    QPainter painter(&screen);
    MakeIcon(IconId::Save).paint(&painter, QRect(0, 0, 16, 16));
    painter.end();
    screen.setDevicePixelRatio(1);
    EXPECT_EQ(
        screen.convertToFormat(QImage::Format_ARGB32),
        MakeIcon(IconId::Save).pixmap(32, 32).toImage().convertToFormat(QImage::Format_ARGB32));
}

}  // namespace
}  // namespace kalvex::window
