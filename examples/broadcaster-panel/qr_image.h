#pragma once

#include <QImage>
#include <QString>

// The text as a QR code, black on white with the four-module margin scanners need, each module
// a whole number of pixels wide and the image at most `maxSide` wide where the code allows; a
// null image when the text does not fit a QR code.
QImage renderQrCode(const QString& text, int maxSide);
