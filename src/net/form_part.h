#pragma once

#include <QByteArray>
#include <QString>
#include <memory>
#include <utility>
#include <vector>

class QHttpMultiPart;

namespace tolvane::net {

// One item of a multipart/form-data body: a text value, or a file read from disk.
struct FormPart {
    enum class Kind { Text, File };

    Kind kind = Kind::Text;
    QString name;
    QString value;  // a text part's value, sent as UTF-8; a file part's path

    static FormPart text(QString name, QString value) {
        return {Kind::Text, std::move(name), std::move(value)};
    }
    static FormPart file(QString name, QString path) {
        return {Kind::File, std::move(name), std::move(path)};
    }
};

// The part's Content-Disposition: form-data; name="%1" for a text, and
// form-data; name="%1"; filename="%2" with the file's name for a file. A double quote, CR or LF
// in either text is written %22, %0D or %0A, as browsers write them, so that no name can close
// the quoted text or start a header of its own.
QByteArray contentDisposition(const FormPart& part);

// The parts as a multipart/form-data body, in order. Every file is opened here and read only
// while the body goes out, never whole into memory. Null when a file cannot be opened; its
// path is then in unopenedFile.
std::unique_ptr<QHttpMultiPart> makeFormData(const std::vector<FormPart>& parts,
                                             QString& unopenedFile);

}  // namespace tolvane::net
