#include "login_page.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <string>

#include "panel_service.h"
#include "qr_image.h"
#include "result_codes.h"

namespace {

// About once a second, as the platform's own clients ask.
constexpr int kPollIntervalMs = 1000;
constexpr int kQrSide = 230;
// The platform says when a code expired; this margin only guards against one that never does.
constexpr int kExpiryMarginSeconds = 5;

struct QrCodeAnswer {
    int32_t code = 0;
    std::string url;
    std::string qrCode;
    int32_t expireSeconds = 0;
};

struct LoginAnswer {
    int32_t code = 0;
    std::string message;
};

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

}  // namespace

LoginPage::LoginPage(PanelService& service, QWidget* parent)
    : QWidget(parent),
      service_(service),
      qrView_(new QLabel),
      qrStateLabel_(new QLabel),
      hintLabel_(new QLabel),
      newCode_(new QPushButton(QStringLiteral("New code"))),
      name_(new QLineEdit),
      password_(new QLineEdit),
      logIn_(new QPushButton(QStringLiteral("Log in"))) {
    qrView_->setFixedSize(kQrSide + 10, kQrSide + 10);
    qrView_->setAlignment(Qt::AlignCenter);
    qrView_->setStyleSheet(QStringLiteral("background: white; border: 1px solid #ccc;"));
    qrStateLabel_->setWordWrap(true);
    hintLabel_->setWordWrap(true);
    hintLabel_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    hintLabel_->setStyleSheet(QStringLiteral("color: #666;"));
    password_->setEchoMode(QLineEdit::Password);
    name_->setPlaceholderText(QStringLiteral("account name"));

    auto* qrBox = new QGroupBox(QStringLiteral("Scan with the app"));
    auto* qrLayout = new QVBoxLayout(qrBox);
    qrLayout->addWidget(qrView_, 0, Qt::AlignHCenter);
    qrLayout->addWidget(qrStateLabel_);
    qrLayout->addWidget(hintLabel_);
    qrLayout->addWidget(newCode_, 0, Qt::AlignLeft);

    auto* passwordBox = new QGroupBox(QStringLiteral("Or with a password"));
    auto* form = new QFormLayout(passwordBox);
    form->addRow(QStringLiteral("Name"), name_);
    form->addRow(QStringLiteral("Password"), password_);
    form->addRow(QString(), logIn_);

    auto* layout = new QHBoxLayout(this);
    layout->addStretch();
    layout->addWidget(qrBox, 0, Qt::AlignTop);
    layout->addWidget(passwordBox, 0, Qt::AlignTop);
    layout->addStretch();

    connect(newCode_, &QPushButton::clicked, this, &LoginPage::requestQrCode);
    connect(logIn_, &QPushButton::clicked, this, &LoginPage::logInWithPassword);
    connect(password_, &QLineEdit::returnPressed, this, &LoginPage::logInWithPassword);
    setQrState(QrState::None);
}

void LoginPage::requestQrCode() {
    ++generation_;
    code_.clear();
    setQrState(QrState::Requesting);
    service_.call(
        this,
        [](ILiveencoderNetService& service) {
            QrCodeAnswer answer;
            answer.code = service.getQRCodeURL(answer.url, answer.qrCode, answer.expireSeconds);
            return answer;
        },
        [this](const QrCodeAnswer& answer) {
            if (done_) {
                return;
            }
            if (answer.code != 0) {
                emit failed(QStringLiteral("getQRCodeURL"), answer.code, QString());
                setQrState(QrState::Failed);
                return;
            }
            image_ = renderQrCode(text(answer.url), kQrSide);
            code_ = text(answer.qrCode);
            deadline_.setRemainingTime((answer.expireSeconds + kExpiryMarginSeconds) * 1000);
            setQrState(QrState::Waiting);
            schedulePoll();
        });
}

void LoginPage::schedulePoll() {
    QTimer::singleShot(kPollIntervalMs, this, [this, generation = generation_] {
        // A new code ends the polling of the old one; each code has one poll at a time.
        if (!done_ && generation == generation_) {
            poll();
        }
    });
}

void LoginPage::poll() {
    const std::string code = code_.toStdString();
    const int generation = generation_;
    service_.call(
        this,
        [code](ILiveencoderNetService& service) {
            LoginAnswer answer;
            std::string longToken;
            answer.code = service.loginByQRCode(code, longToken, answer.message);
            return answer;
        },
        [this, generation](const LoginAnswer& answer) {
            onPolled(generation, answer.code, text(answer.message));
        });
}

void LoginPage::onPolled(int generation, int code, const QString& message) {
    if (done_ || generation != generation_) {
        return;
    }
    if (code == 0) {
        done_ = true;
        setQrState(QrState::Confirmed);
        emit loggedIn();
        return;
    }
    if (code == qr_codes::kExpired || code == qr_codes::kUnknown || deadline_.hasExpired()) {
        setQrState(QrState::Expired, message);
        return;
    }
    if (code == qr_codes::kScanned) {
        setQrState(QrState::Scanned, message);
    } else if (code == qr_codes::kWaiting) {
        setQrState(QrState::Waiting, message);
    } else if (code != kNoAnswer) {  // a poll without an answer is simply asked again
        emit failed(QStringLiteral("loginByQRCode"), code, message);
        setQrState(QrState::Failed, message);
        return;
    }
    schedulePoll();
}

void LoginPage::setQrState(QrState state, const QString& detail) {
    const bool changed = state != state_;
    state_ = state;
    QString line;
    switch (state) {
        case QrState::None:
            line = QStringLiteral("Waiting for the service\u2026");
            break;
        case QrState::Requesting:
            line = QStringLiteral("Asking for a code\u2026");
            break;
        case QrState::Waiting:
            line = QStringLiteral("<b>Waiting</b> for a scan");
            break;
        case QrState::Scanned:
            line = QStringLiteral("<b>Scanned</b>: confirm the login in the app");
            break;
        case QrState::Confirmed:
            line = QStringLiteral("<b>Confirmed</b>: logging in\u2026");
            break;
        case QrState::Expired:
            line = QStringLiteral("<b>Expired</b>: ask for a new code");
            break;
        case QrState::Failed:
            line = QStringLiteral("<b>Failed</b>: ask for a new code");
            break;
    }
    if (!detail.isEmpty() && state != QrState::Waiting) {
        line += QStringLiteral(" (%1)").arg(detail.toHtmlEscaped());
    }
    qrStateLabel_->setText(line);
    const bool showCode = state == QrState::Waiting || state == QrState::Scanned;
    if (showCode && !image_.isNull()) {
        qrView_->setPixmap(QPixmap::fromImage(image_));
    } else if (!showCode) {
        qrView_->setPixmap(QPixmap());
        qrView_->setText(state == QrState::Expired ? QStringLiteral("expired") : QString());
    }
    hintLabel_->setText(
        showCode && !phoneCommand_.isEmpty()
            ? QStringLiteral("To scan and confirm as the phone would:<br><tt>%1 %2</tt>")
                  .arg(phoneCommand_.toHtmlEscaped(), code_.toHtmlEscaped())
            : QString());
    refreshButtons();
    if (changed) {
        emit qrStateChanged(state);
    }
}

void LoginPage::logInWithPassword() {
    if (done_ || passwordPending_ || name_->text().isEmpty()) {
        return;
    }
    passwordPending_ = true;
    refreshButtons();
    const std::string name = name_->text().toStdString();
    const std::string password = password_->text().toStdString();
    service_.call(
        this,
        [name, password](ILiveencoderNetService& service) {
            LoginAnswer answer;
            std::string longToken;
            answer.code = service.login(name.c_str(), password.c_str(), answer.message, longToken);
            return answer;
        },
        [this](const LoginAnswer& answer) {
            passwordPending_ = false;
            if (done_) {
                return;
            }
            if (answer.code != 0) {
                emit failed(QStringLiteral("login"), answer.code, text(answer.message));
                refreshButtons();
                return;
            }
            done_ = true;
            emit loggedIn();
        });
}

void LoginPage::refreshButtons() {
    newCode_->setEnabled(!done_ && state_ != QrState::Requesting);
    logIn_->setEnabled(!done_ && !passwordPending_);
    name_->setEnabled(!passwordPending_);
    password_->setEnabled(!passwordPending_);
}
