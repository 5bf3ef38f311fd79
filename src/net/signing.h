#pragma once

#include <QString>
#include <QUrlQuery>
#include <QtGlobal>

#include "tolvane/request_descriptor.h"

namespace tolvane::net {

// path + "?" + query + "%s", then "&" + extraQuery when that is non-empty. The "%s" mark is
// where the signing function puts its secret, so it is sent literally.
QString signatureString(const QString& path, const QString& query, const QString& extraQuery);

// Runs the client-base library's signing function over the UTF-8 text; live selects the
// test-environment secret. A null result gives an empty text.
QString callSigner(const QString& signatureText, bool live);

// Signs a request of the given base-address kind and appends ("auth", code) to the group
// the kind signs into: B (or A when B is empty) for kinds 0-5 and 7, A for kinds 6 and 10.
// Kinds 8, 9, 11 and unknown kinds carry no signature. Kinds 6 and 10 use the test secret
// whenever the environment index is not 0.
void signByKind(int kind, int environment, const QString& path, ParamList& groupA,
                ParamList& groupB, const ParamList& groupC);

// Helpers for operations that build their own URL; each returns the "auth" value.

// path?aid=vxtool&time=t%s[&list]
QString signFixedCommonQuery(const QString& path, qint64 time, const ParamList& list);

// "aid" and "time" are appended to the first list before it is sorted.
QString signWithCommonValues(const QString& path, qint64 time, ParamList first,
                             const ParamList& second);

// path?<QUrlQuery::toString()>%s
QString signQtQuery(const QString& path, const QUrlQuery& query);

// path?<QUrlQuery::toString()>%s[&list]
QString signQtQueryAndList(const QString& path, const QUrlQuery& query, const ParamList& list);

}  // namespace tolvane::net
