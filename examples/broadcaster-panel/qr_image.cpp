#include "qr_image.h"

#include <qrencode.h>

#include <QPainter>
#include <algorithm>
#include <memory>

namespace {

constexpr int kQuietZone = 4;

}  // namespace

QImage renderQrCode(const QString& text, int maxSide) {
    const QByteArray bytes = text.toUtf8();
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeString8bit(bytes.constData(), 0, QR_ECLEVEL_M), &QRcode_free);
    if (!code) {
        return QImage();
    }
    // Whole pixels per module keep the edges sharp for a camera.
    const int scale = std::max(1, maxSide / (code->width + 2 * kQuietZone));
    const int side = (code->width + 2 * kQuietZone) * scale;
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    for (int y = 0; y < code->width; ++y) {
        for (int x = 0; x < code->width; ++x) {
            // Bit 0 of each byte is the module's colour; the other bits describe its role.
            if ((code->data[y * code->width + x] & 1) != 0) {
                painter.fillRect((x + kQuietZone) * scale, (y + kQuietZone) * scale, scale, scale,
                                 Qt::black);
            }
        }
    }
    return image;
}
