#pragma once

#include <QString>
#include <QWidget>
#include <cstdint>

class QLabel;

// Who is on air and where: nickname, uid, room id and title, anchor level and category.
class ProfileStrip : public QWidget {
    Q_OBJECT
public:
    struct Profile {
        QString nickname;
        QString uid;
        int32_t roomId = -1;
        QString roomTitle;
        int32_t anchorLevel = 0;
    };

    explicit ProfileStrip(QWidget* parent = nullptr);

    void setProfile(const Profile& profile);
    void setCategory(const QString& game, const QString& child);
    const Profile& profile() const { return profile_; }

private:
    Profile profile_;
    QLabel* nickname_;
    QLabel* details_;
    QLabel* room_;
    QLabel* category_;
};
