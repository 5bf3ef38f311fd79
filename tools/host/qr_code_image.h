#pragma once

#include <QString>
#include <vector>

// A QR code as dark and light modules, drawn for a terminal or written as a PNG file.
class QrCodeImage {
public:
    // Encodes UTF-8 text at error-correction level M; empty when the text does not fit.
    static QrCodeImage encode(const QString& text);

    bool isEmpty() const { return width_ == 0; }
    int width() const { return width_; }  // modules per side, without the quiet zone
    bool dark(int x, int y) const;

    // Two module rows per text line in block characters, with the quiet zone a scanner
    // needs. `ansiColours` paints dark on light whatever the terminal's own colours are.
    QString terminalText(bool ansiColours) const;
    // `scale` pixels per module, quiet zone included; false when the file cannot be written.
    bool writePng(const QString& path, int scale = 8) const;

private:
    int width_ = 0;
    std::vector<bool> modules_;  // row by row
};
