#include "workbench/qt/Icons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <algorithm>

namespace kalvex::window {

namespace {

constexpr double kDisabledOpacity = 0.4;
constexpr IconId kLogIcons[] = {IconId::Log0, IconId::Log1, IconId::Log2, IconId::Log3};

QPixmap Drawn(IconId id, const QSize& size, const QColor& text, bool disabled) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const int side = std::min(size.width(), size.height());
    QPainter painter(&image);
    if (disabled) painter.setOpacity(kDisabledOpacity);
    QSvgRenderer renderer(SvgOf(id, text));
    renderer.render(&painter,
                    QRectF((size.width() - side) / 2.0, (size.height() - side) / 2.0, side, side));
    painter.end();
    return QPixmap::fromImage(image);
}

// Draws anew for each size, and for each colour of the text.
class SvgEngine final : public QIconEngine {
  public:
    explicit SvgEngine(IconId id) : m_id(id) {}

    QIconEngine* clone() const override { return new SvgEngine(m_id); }

    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override { return size; }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        const bool disabled = mode == QIcon::Disabled;
        const QColor text =
            QGuiApplication::palette().color(QPalette::Active, QPalette::WindowText);
        const QString key = QStringLiteral("kalvex %1 %2 %3 %4 %5")
                                .arg(static_cast<int>(m_id))
                                .arg(size.width())
                                .arg(size.height())
                                .arg(text.name())
                                .arg(disabled);
        QPixmap pixmap;
        if (QPixmapCache::find(key, &pixmap)) return pixmap;
        pixmap = Drawn(m_id, size, text, disabled);
        QPixmapCache::insert(key, pixmap);
        return pixmap;
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const double scale = painter->device()->devicePixelRatioF();
        QPixmap drawn = pixmap((QSizeF(rect.size()) * scale).toSize(), mode, state);
        drawn.setDevicePixelRatio(scale);
        painter->drawPixmap(rect.topLeft(), drawn);
    }

  private:
    const IconId m_id;
};

}  // namespace

QByteArray SvgOf(IconId id, const QColor& text) {
    const IconRow& row = *std::ranges::find(IconTable(), id, &IconRow::id);
    QByteArray svg = R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 16 16">)";
    svg += QByteArray(row.shapes).replace('@', text.name().toLatin1());
    return svg + "</svg>";
}

QIcon MakeIcon(IconId id) {
    return QIcon(new SvgEngine(id));
}

QIcon LogIcon(int level) {
    const auto last = static_cast<int>(std::size(kLogIcons)) - 1;
    return MakeIcon(kLogIcons[std::clamp(level, 0, last)]);
}

QIcon ProgramIcon(bool error) {
    return MakeIcon(error ? IconId::ProgramError : IconId::Program);
}

}  // namespace kalvex::window
