#pragma once

#include <QString>

// Process-wide settings of the client-base library that every request it makes carries.

// Selects the key set that the signing functions use; the module always passes 1.
void InitFuzzyKeyType(int type);
int fuzzyKeyType();

// The host application's version, sent with every passport request.
void setClientVersion(const QString& version);
QString clientVersion();
