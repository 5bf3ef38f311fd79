#include "net/form_part.h"

#include <QFile>
#include <QFileInfo>
#include <QHttpMultiPart>

#include "net/send_once_device.h"

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

}  // namespace

std::unique_ptr<QHttpMultiPart> makeFormData(const std::vector<FormPart>& parts,
                                             QString& unopenedFile) {
    auto form = std::make_unique<QHttpMultiPart>(QHttpMultiPart::FormDataType);
    for (const FormPart& item : parts) {
        QHttpPart part;
        QString disposition = QStringLiteral("form-data; name=\"%1\"").arg(item.name);
        if (item.kind == FormPart::Kind::File) {
            auto* file = new QFile(item.value);
            if (!file->open(QIODevice::ReadOnly)) {
                delete file;
                unopenedFile = item.value;
                return nullptr;
            }
            disposition +=
                QStringLiteral("; filename=\"%1\"").arg(QFileInfo(item.value).fileName());
            part.setHeader(QNetworkRequest::ContentTypeHeader, contentTypeOfFile(item.value));
            part.setBodyDevice(new SendOnceDevice(file, form.get()));
        } else {
            // Not setBody(): a part Qt can rewind would let it send a form of text alone twice.
            part.setBodyDevice(SendOnceDevice::fromBytes(item.value.toUtf8(), form.get()));
        }
        part.setHeader(QNetworkRequest::ContentDispositionHeader, disposition.toUtf8());
        form->append(part);
    }
    return form;
}

}  // namespace tolvane::net
