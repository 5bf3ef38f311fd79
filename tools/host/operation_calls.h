#pragma once

#include <QJsonObject>
#include <QStringList>
#include <functional>

#include "tolvane/i_liveencoder_net_service.h"

// Runs one interface operation by name with text arguments and reports its result and
// outputs as JSON; what `tolvane-host call` prints.
struct OperationCall {
    QString name;
    QString usage;  // arguments, for the help text
    std::function<QJsonObject(ILiveencoderNetService&, const QStringList&)> run;
};

const QVector<OperationCall>& operationCalls();
const OperationCall* findOperation(const QString& name);
