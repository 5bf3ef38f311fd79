#pragma once

#include <QString>
#include <QtGlobal>

#include "tolvane/request_descriptor.h"

namespace tolvane::net {

// The list sorted by key, then value, written as k=v pairs joined with "&". Nothing is
// percent-encoded: this is the text that gets signed, not the text that gets sent.
QString queryText(const ParamList& list);

// Appends (key, "") unless the key is already present.
void ensureKey(ParamList& list, const QString& key);

// Fills the first pair with this key when its value is empty; a value that an operation set
// itself is never replaced, and an absent key is not added.
void setEmptyValue(ParamList& list, const QString& key, const QString& value);

// First value stored under the key, or the fallback when the key is absent.
QString valueOf(const ParamList& list, const QString& key, const QString& fallback = QString());

// The platform's name for this application, sent as "aid".
inline constexpr char kAppId[] = "vxtool";

// The values every signed request may carry.
struct CommonValues {
    QString aid = QString::fromLatin1(kAppId);
    qint64 time = 0;  // server time in whole seconds
    QString token;    // session token, see sessionToken()
};

// Fills empty "aid", "time" and "token" pairs of the list.
void fillCommonValues(ParamList& list, const CommonValues& values);

// Adds the common keys that the service kind expects (kind 1: "aid" and "time" in group B;
// kinds 6 and 10: "aid", "time" and "token" in group A), then fills groups A and B.
void addPlaceholdersByKind(RequestDescriptor& request, const CommonValues& values);

}  // namespace tolvane::net
