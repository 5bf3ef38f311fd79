#include "panel_service.h"

PanelService::PanelService(QObject* parent)
    : QObject(parent),
      net_(std::make_unique<tolvane::AsyncNetService>(&CreateNetService, this, nullptr)) {
    call(
        this,
        [this](ILiveencoderNetService& service) {
            service.setClientVersion("broadcaster-panel", "0.1.0");
            IVxLiveRoomInfo* catalogue = service.getLiveRoomInfo();
            if (catalogue != nullptr) {
                catalogue->addObserver(this);
            }
            return catalogue;
        },
        [this](IVxLiveRoomInfo* catalogue) {
            catalogue_ = catalogue;
            emit ready();
        });
}

// The service goes first: it stops and releases on its own thread, after which neither of
// its observers, both this object, is called again.
PanelService::~PanelService() {
    net_.reset();
}

void PanelService::onBarrageMessage(const BarrageMessage* message) {
    // The record is valid only during this call, so the signal carries copies.
    emit barrageMessage(QString::fromStdString(message->typeName),
                        QByteArray::fromStdString(message->rawText));
}
