#include "profile_strip.h"

#include <QGridLayout>
#include <QLabel>
#include <QPalette>

ProfileStrip::ProfileStrip(QWidget* parent)
    : QWidget(parent),
      nickname_(new QLabel(QStringLiteral("not logged in"))),
      details_(new QLabel),
      room_(new QLabel),
      category_(new QLabel) {
    QFont big = nickname_->font();
    big.setPointSizeF(big.pointSizeF() * 1.4);
    big.setBold(true);
    nickname_->setFont(big);
    QPalette tinted = palette();
    tinted.setColor(QPalette::Window, QColor(0xee, 0xf2, 0xf7));
    setPalette(tinted);
    setAutoFillBackground(true);
    auto* layout = new QGridLayout(this);
    layout->addWidget(nickname_, 0, 0);
    layout->addWidget(details_, 1, 0);
    layout->addWidget(room_, 0, 1, Qt::AlignRight);
    layout->addWidget(category_, 1, 1, Qt::AlignRight);
}

void ProfileStrip::setProfile(const Profile& profile) {
    profile_ = profile;
    nickname_->setText(profile.nickname);
    details_->setText(
        QStringLiteral("uid %1 \u00b7 anchor level %2").arg(profile.uid).arg(profile.anchorLevel));
    room_->setText(QStringLiteral("room <b>%1</b> \u201c%2\u201d")
                       .arg(profile.roomId)
                       .arg(profile.roomTitle.toHtmlEscaped()));
}

void ProfileStrip::setCategory(const QString& game, const QString& child) {
    category_->setText(child.isEmpty() ? game : QStringLiteral("%1 / %2").arg(game, child));
}
