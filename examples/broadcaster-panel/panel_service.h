#pragma once

#include <tolvane/async_net_service.h>
#include <tolvane/i_liveencoder_net_service.h>
#include <tolvane/i_vx_live_room_info.h>

#include <QByteArray>
#include <QObject>
#include <QString>
#include <memory>
#include <utility>

// The panel's one service, on a thread of its own, and the module's callbacks turned into Qt
// signals. The module calls the observers on its own threads; the signals reach the widgets
// queued, on the GUI thread.
class PanelService : public QObject, public ServiceObserver, public IVxDataSubject {
    Q_OBJECT
public:
    explicit PanelService(QObject* parent = nullptr);
    ~PanelService() override;

    bool isValid() const { return net_->isValid(); }

    // Runs op(service) on the service thread, then done(result) on context's thread; skipped
    // when context is gone by then. The GUI thread never waits for the service.
    template <class Op, class Done>
    void call(QObject* context, Op op, Done done) {
        net_->post(std::move(op), context, std::move(done));
    }

    // The gift catalogue; null until ready(). Its lookups may be made on any thread.
    IVxLiveRoomInfo* catalogue() const { return catalogue_; }

signals:
    void ready();
    void barrageMessage(const QString& type, const QByteArray& text);
    void roomStatus(int status);
    void showEnded(int reason, double banHours);
    void catalogueChanged(int table);

private:
    void onRoomStatus(int32_t status) override { emit roomStatus(status); }
    void onText(const std::string&) override {}
    void onShowEnd(int32_t reason, float banHours) override { emit showEnded(reason, banHours); }
    void onBarrageMessage(const BarrageMessage* message) override;
    void onTableChanged(VxCatalogueTable table) override {
        emit catalogueChanged(static_cast<int>(table));
    }
    void onRoomChanged(int32_t) override {}

    std::unique_ptr<tolvane::AsyncNetService> net_;
    IVxLiveRoomInfo* catalogue_ = nullptr;
};
