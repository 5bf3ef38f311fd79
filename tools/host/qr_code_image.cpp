#include "qr_code_image.h"

#include <qrencode.h>

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <memory>

namespace {

// Scanners need four light modules around the code.
constexpr int kQuietZone = 4;

}  // namespace

QrCodeImage QrCodeImage::encode(const QString& text) {
    QrCodeImage image;
    const QByteArray bytes = text.toUtf8();
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeString8bit(bytes.constData(), 0, QR_ECLEVEL_M), &QRcode_free);
    if (!code) {
        return image;
    }
    image.width_ = code->width;
    image.modules_.resize(static_cast<size_t>(code->width) * code->width);
    for (size_t i = 0; i < image.modules_.size(); ++i) {
        image.modules_[i] = (code->data[i] & 1) != 0;  // bit 0 is the module's colour
    }
    return image;
}

bool QrCodeImage::dark(int x, int y) const {
    if (x < 0 || y < 0 || x >= width_ || y >= width_) {
        return false;
    }
    return modules_[static_cast<size_t>(y) * width_ + x];
}

QString QrCodeImage::terminalText(bool ansiColours) const {
    const int from = -kQuietZone;
    const int to = width_ + kQuietZone;
    QString text;
    for (int y = from; y < to; y += 2) {
        if (ansiColours) {
            text += QStringLiteral("\033[30;47m");  // black on white
        }
        for (int x = from; x < to; ++x) {
            const bool top = dark(x, y);
            const bool bottom = y + 1 < to && dark(x, y + 1);
            if (top && bottom) {
                text += QChar(0x2588);  // full block
            } else if (top) {
                text += QChar(0x2580);  // upper half block
            } else if (bottom) {
                text += QChar(0x2584);  // lower half block
            } else {
                text += QLatin1Char(' ');
            }
        }
        if (ansiColours) {
            text += QStringLiteral("\033[0m");
        }
        text += QLatin1Char('\n');
    }
    return text;
}

bool QrCodeImage::writePng(const QString& path, int scale) const {
    if (isEmpty() || scale < 1) {
        return false;
    }
    const int side = (width_ + 2 * kQuietZone) * scale;
    QImage image(side, side, QImage::Format_Grayscale8);
    image.fill(255);
    for (int y = 0; y < width_; ++y) {
        for (int x = 0; x < width_; ++x) {
            if (!dark(x, y)) {
                continue;
            }
            for (int dy = 0; dy < scale; ++dy) {
                uchar* line = image.scanLine((y + kQuietZone) * scale + dy);
                std::fill_n(line + (x + kQuietZone) * scale, scale, uchar{0});
            }
        }
    }
    QDir().mkpath(QFileInfo(path).absolutePath());
    return image.save(path, "PNG");
}
