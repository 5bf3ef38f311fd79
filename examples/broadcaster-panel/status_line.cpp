#include "status_line.h"

#include "result_codes.h"

StatusLine::StatusLine(QWidget* parent) : QLabel(parent) {
    setTextInteractionFlags(Qt::TextSelectableByMouse);
}

void StatusLine::showInfo(const QString& text) {
    setStyleSheet(QString());
    setText(text);
}

void StatusLine::showFailure(const QString& operation, int code, const QString& message) {
    QString line = QStringLiteral("%1 failed: %2").arg(operation, resultCodeName(code));
    if (!message.isEmpty()) {
        line += QStringLiteral(" \u2014 ") + message;
    }
    failures_ << line;
    setStyleSheet(QStringLiteral("color: #b00020;"));
    setText(line);
}
