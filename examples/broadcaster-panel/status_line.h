#pragma once

#include <QLabel>
#include <QStringList>
#include <cstdint>
#include <string>

// The window's bottom line: the last thing that happened, and every failure by its code's name
// and the platform's message. Failures are kept so that a test can tell a clean road.
class StatusLine : public QLabel {
    Q_OBJECT
public:
    explicit StatusLine(QWidget* parent = nullptr);

    const QStringList& failures() const { return failures_; }

public slots:
    void showInfo(const QString& text);
    void showFailure(const QString& operation, int code, const QString& message);

private:
    QStringList failures_;
};
