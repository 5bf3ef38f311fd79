#pragma once

#include <QString>
#include <QWidget>

class CategoryPicker;
class PanelService;
class QLabel;
class QListWidget;
class QPushButton;

// Going live: the category and tags, the push lines (main and H.265), and the buttons that
// open and close the show, which follow the room's live state as the platform reports it.
class LiveSetup : public QWidget {
    Q_OBJECT
public:
    static constexpr int kUrlRole = Qt::UserRole;  // a push line's address

    explicit LiveSetup(PanelService& service, QWidget* parent = nullptr);

    // Loads the categories, the push lines and the live state; called once logged in.
    void start();

    CategoryPicker& picker() const { return *picker_; }
    QListWidget* pushLines() const { return lines_; }
    QPushButton* goLiveButton() const { return goLive_; }
    QPushButton* stopButton() const { return stop_; }
    bool isLive() const { return live_; }

public slots:
    // Asks the platform again, for instance after it announced the end of the show.
    void refreshLiveState();

signals:
    void failed(const QString& operation, int code, const QString& message);
    void liveChanged(bool live);

private:
    void loadPushLines();
    void setLive(bool live);
    void openShow();
    void closeShow();
    // A live call's answer: the call's own code, then the room's state as the platform has it.
    void onLiveAnswer(const QString& operation, int code, int stateCode, bool live);
    void refreshButtons();

    PanelService& service_;
    CategoryPicker* picker_;
    QListWidget* lines_;
    QPushButton* reloadLines_;
    QPushButton* goLive_;
    QPushButton* stop_;
    QLabel* liveBadge_;
    bool started_ = false;
    bool live_ = false;
    bool stateKnown_ = false;
    bool linesPending_ = false;
    bool livePending_ = false;
};
