#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QString>

namespace tolvane::config {

// Points the selected environment at other servers (the simulator). "origin" replaces the
// scheme and host of every address; "base" and "host" replace single cells by kind number.
struct EndpointOverrides {
    QString origin;           // e.g. "http://127.0.0.1:40123"; empty: none
    QMap<int, QString> base;  // base-address kind -> full base address
    QMap<int, QString> host;  // host kind -> scheme and host, no trailing "/"
    bool isEmpty() const { return origin.isEmpty() && base.isEmpty() && host.isEmpty(); }
};

// Why the file gave no settings, when it gave none.
enum class DefaultDataStatus {
    Read,         // a JSON object (whether or not it names an environment)
    NoPath,       // the host executable's folder is unknown
    Missing,      // no file at the path
    Unreadable,   // a file that cannot be opened
    NotAnObject,  // opened, but not a JSON object
};

struct DefaultData {
    int environment = 0;  // "app.domain"; 0 unless it is a whole JSON number
    EndpointOverrides endpoints;
    QJsonObject root;  // the whole object, for settings of the platform libraries
    DefaultDataStatus status = DefaultDataStatus::Read;
    QString path;   // the file looked at (readDefaultData)
    QString error;  // the system's reason when the file is Unreadable
};

// The file beside the host executable, or the one TOLVANE_DEFAULT_DATA names; empty when the
// executable's folder is unknown.
QString defaultDataPath();

DefaultData parseDefaultData(const QByteArray& content);

// Reads and parses the file; defaults, with the status saying why, when it is missing or
// unreadable.
DefaultData readDefaultData();

// Applies the overrides to a compiled-in address. An empty cell stays empty: that
// environment has no such service. "origin" keeps the cell's path part.
QString applyBaseOverride(const EndpointOverrides& overrides, int kind, const QString& cell);
QString applyHostOverride(const EndpointOverrides& overrides, int kind, const QString& cell);

}  // namespace tolvane::config
