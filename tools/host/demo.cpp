#include "demo.h"

#include <QString>

#include "printing_observer.h"

namespace {

void step(QTextStream& out, const QString& name, const QString& result) {
    out << QStringLiteral("%1 %2").arg(name, -34, QLatin1Char('.')).arg(result) << Qt::endl;
}

}  // namespace

int runDemo(CreateNetServiceFunction createNetService, PrintingObserver& observer,
            QTextStream& out) {
    out << "Tolvane demo: the broadcast road as far as the module offers it" << Qt::endl;
    ILiveencoderNetService* service = createNetService(&observer, &observer);
    if (service == nullptr) {
        out << "CreateNetService returned null" << Qt::endl;
        return 1;
    }
    step(out, QStringLiteral("isAvailable"), QString::number(service->isAvailable()));
    step(out, QStringLiteral("getAppId"), QString::fromUtf8(service->getAppId()));
    step(out, QStringLiteral("getBizType"), QString::number(service->getBizType()));
    service->setClientVersion("00_1A_2B_3C_4D_5E", "v2.4.0.1");
    step(out, QStringLiteral("setClientVersion"), QStringLiteral("00_1A_2B_3C_4D_5E / v2.4.0.1"));
    step(out, QStringLiteral("getServerTime"), QString::number(service->getServerTime()));

    const int32_t status =
        service->setLiveParameters(LiveParameters{0, 0, 0, 0, 0, 0, true, false, true});
    step(out, QStringLiteral("setLiveParameters"),
         QStringLiteral("0x%1").arg(status, 6, 16, QLatin1Char('0')));

    service->stop();
    step(out, QStringLiteral("stop"), QStringLiteral("done"));
    service->release();
    step(out, QStringLiteral("release"), QStringLiteral("done"));
    return 0;
}
