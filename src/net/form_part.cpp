#include "net/form_part.h"

#include <QFile>
#include <QFileInfo>
#include <QHttpMultiPart>

#include "tolvane_config/send_once_device.h"

namespace tolvane::net {

namespace {

QByteArray contentTypeOfFile(const QString& path) {
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("png")) {
        return QByteArrayLiteral("image/png");
    }
    if (suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg")) {
        return QByteArrayLiteral("image/jpeg");
    }
    return QByteArrayLiteral("application/octet-stream");
}

// A quoted text of a header never holds its closing quote or a line break.
QString quotable(QString text) {
    return text.replace(QLatin1Char('"'), QLatin1String("%22"))
        .replace(QLatin1Char('\r'), QLatin1String("%0D"))
        .replace(QLatin1Char('\n'), QLatin1String("%0A"));
}

}  // namespace

QByteArray contentDisposition(const FormPart& part) {
    const QString name = quotable(part.name);
    if (part.kind == FormPart::Kind::Text) {
        return QStringLiteral("form-data; name=\"%1\"").arg(name).toUtf8();
    }
    return QStringLiteral("form-data; name=\"%1\"; filename=\"%2\"")
        .arg(name, quotable(QFileInfo(part.value).fileName()))
        .toUtf8();
}

std::unique_ptr<QHttpMultiPart> makeFormData(const std::vector<FormPart>& parts,
                                             QString& unopenedFile) {
    auto form = std::make_unique<QHttpMultiPart>(QHttpMultiPart::FormDataType);
    for (const FormPart& item : parts) {
        QHttpPart part;
        if (item.kind == FormPart::Kind::File) {
            auto* file = new QFile(item.value);
            if (!file->open(QIODevice::ReadOnly)) {
                delete file;
                unopenedFile = item.value;
                return nullptr;
            }
            part.setHeader(QNetworkRequest::ContentTypeHeader, contentTypeOfFile(item.value));
            part.setBodyDevice(new SendOnceDevice(file, form.get()));
        } else {
            // Not setBody(): a part Qt can rewind would let it send a form of text alone twice.
            part.setBodyDevice(SendOnceDevice::fromBytes(item.value.toUtf8(), form.get()));
        }
        part.setHeader(QNetworkRequest::ContentDispositionHeader, contentDisposition(item));
        form->append(part);
    }
    return form;
}

}  // namespace tolvane::net
