#pragma once

#include <QPair>
#include <QString>
#include <QVector>
#include <cstdint>

// Ordered (key, value) pairs; keys may repeat.
using ParamList = QVector<QPair<QString, QString>>;

// A request the service signs and sends for the host (slots 96 and 97).
struct RequestDescriptor {
    int32_t kind = 0;  // base-address kind 0..11
    QString path;      // appended to the base address, no leading "/"
    ParamList groupA;  // sent as request headers
    ParamList groupB;  // sent as the URL query
    ParamList groupC;  // sent as the form body of a POST
    int32_t timeoutMs = 30000;
};
