#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QVector>

// The items of one barrage text, in order; keys may repeat.
using BarrageItems = QVector<QPair<QString, QString>>;

// Reads a barrage text, "key=value;" items in which "\\", "\e" and "\s" stand for "\", "=" and
// ";". A value may itself be a barrage text (ranking lists). Returns no items for a text that
// breaks the format, so that a damaged message shows nothing rather than something wrong.
BarrageItems readBarrageText(const QByteArray& text);

// The first value under `key`, or an empty text.
QString barrageValue(const BarrageItems& items, const QString& key);
