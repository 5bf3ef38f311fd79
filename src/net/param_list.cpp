#include "net/param_list.h"

#include <QStringList>
#include <algorithm>

namespace tolvane::net {

QString queryText(const ParamList& list) {
    ParamList sorted = list;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const QPair<QString, QString>& a, const QPair<QString, QString>& b) {
                         if (a.first != b.first) {
                             return a.first < b.first;
                         }
                         return a.second < b.second;
                     });
    QStringList pairs;
    pairs.reserve(sorted.size());
    for (const auto& pair : sorted) {
        pairs << pair.first + QLatin1Char('=') + pair.second;
    }
    return pairs.join(QLatin1Char('&'));
}

void ensureKey(ParamList& list, const QString& key) {
    for (const auto& pair : list) {
        if (pair.first == key) {
            return;
        }
    }
    list.append(qMakePair(key, QString()));
}

void setEmptyValue(ParamList& list, const QString& key, const QString& value) {
    if (value.isEmpty()) {
        return;
    }
    for (auto& pair : list) {
        if (pair.first == key) {
            if (pair.second.isEmpty()) {
                pair.second = value;
            }
            return;
        }
    }
}

QString valueOf(const ParamList& list, const QString& key, const QString& fallback) {
    for (const auto& pair : list) {
        if (pair.first == key) {
            return pair.second;
        }
    }
    return fallback;
}

void fillCommonValues(ParamList& list, const CommonValues& values) {
    setEmptyValue(list, QStringLiteral("aid"), values.aid);
    setEmptyValue(list, QStringLiteral("time"), QString::number(values.time));
    setEmptyValue(list, QStringLiteral("token"), values.token);
}

void addPlaceholdersByKind(RequestDescriptor& request, const CommonValues& values) {
    if (request.kind == 1) {
        ensureKey(request.groupB, QStringLiteral("aid"));
        ensureKey(request.groupB, QStringLiteral("time"));
    } else if (request.kind == 6 || request.kind == 10) {
        ensureKey(request.groupA, QStringLiteral("aid"));
        ensureKey(request.groupA, QStringLiteral("time"));
        ensureKey(request.groupA, QStringLiteral("token"));
    }
    fillCommonValues(request.groupA, values);
    fillCommonValues(request.groupB, values);
}

}  // namespace tolvane::net
