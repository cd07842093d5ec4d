// SPDX-License-Identifier: GPL-3.0-or-later
#include "Symbols.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <array>

using namespace Qt::StringLiterals;

// Without this reference the linker would leave the embedded files out of the static library. The macro does
// not work inside a namespace.
static void registerPictures()
{
    Q_INIT_RESOURCE(symbols);
}

namespace {

constexpr std::array symbolSizes{14, 16, 18, 20, 22, 24, 32, 36, 44, 48, 64};
constexpr std::array applicationIconSizes{16, 22, 24, 32, 48, 64, 128, 256};

/// The embedded vector file `path`; empty for an unknown one.
QByteArray picture(const QString &path)
{
    registerPictures();
    QFile file(u":/orvane/"_s + path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray symbolPicture(const QString &name)
{
    return picture(u"symbols/"_s + name + u".svg"_s);
}

/// A square image, `pixels` wide.
QImage drawn(QSvgRenderer &renderer, int pixels)
{
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(image.rect()));
    return image;
}

QImage drawnInTint(QSvgRenderer &renderer, int pixels, const QColor &tint)
{
    QImage image = drawn(renderer, pixels);
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), tint);
    return image;
}

} // namespace

QImage Symbols::image(const QString &name, qreal size, const QColor &tint, qreal devicePixelRatio)
{
    const int pixels = qRound(size * devicePixelRatio);
    const QByteArray source = symbolPicture(name);
    if (source.isEmpty() || pixels <= 0)
        return {};
    QSvgRenderer renderer(source);
    QImage image = drawnInTint(renderer, pixels, tint);
    image.setDevicePixelRatio(devicePixelRatio);
    return image;
}

QIcon Symbols::icon(const QString &name, const QColor &tint)
{
    const QByteArray source = symbolPicture(name);
    if (source.isEmpty())
        return {};
    QSvgRenderer renderer(source);
    QIcon icon;
    for (const int pixels : symbolSizes)
        icon.addPixmap(QPixmap::fromImage(drawnInTint(renderer, pixels, tint)));
    return icon;
}

QIcon Symbols::applicationIcon(int largest)
{
    QSvgRenderer renderer(picture(u"icon/orvanebreak.svg"_s));
    QIcon icon;
    for (const int pixels : applicationIconSizes) {
        if (pixels <= largest)
            icon.addPixmap(QPixmap::fromImage(drawn(renderer, pixels)));
    }
    return icon;
}
