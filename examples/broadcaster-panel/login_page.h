#pragma once

#include <QDeadlineTimer>
#include <QImage>
#include <QString>
#include <QWidget>

class PanelService;
class QLabel;
class QLineEdit;
class QPushButton;

// The two ways in: a QR code to scan with the platform's app, polled until the anchor confirms
// it or it expires, and name and password beside it.
class LoginPage : public QWidget {
    Q_OBJECT
public:
    enum class QrState { None, Requesting, Waiting, Scanned, Confirmed, Expired, Failed };
    Q_ENUM(QrState)

    explicit LoginPage(PanelService& service, QWidget* parent = nullptr);

    QrState qrState() const { return state_; }
    QString qrCode() const { return code_; }
    QImage qrImage() const { return image_; }
    QPushButton* newCodeButton() const { return newCode_; }
    QLineEdit* nameField() const { return name_; }
    QLineEdit* passwordField() const { return password_; }
    QPushButton* logInButton() const { return logIn_; }
    // A command that plays the phone when given the code, shown under the code.
    void setPhoneCommand(const QString& command) { phoneCommand_ = command; }

public slots:
    void requestQrCode();

signals:
    void qrStateChanged(LoginPage::QrState state);
    void loggedIn();
    void failed(const QString& operation, int code, const QString& message);

private:
    void schedulePoll();
    void poll();
    void onPolled(int generation, int code, const QString& message);
    void setQrState(QrState state, const QString& detail = QString());
    void logInWithPassword();
    void refreshButtons();

    PanelService& service_;
    QLabel* qrView_;
    QLabel* qrStateLabel_;
    QLabel* hintLabel_;
    QPushButton* newCode_;
    QLineEdit* name_;
    QLineEdit* password_;
    QPushButton* logIn_;
    QString phoneCommand_;
    QrState state_ = QrState::None;
    QString code_;
    QImage image_;
    QDeadlineTimer deadline_;
    int generation_ = 0;  // a poll answered for an older code is ignored
    bool passwordPending_ = false;
    bool done_ = false;
};
