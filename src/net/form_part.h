#pragma once

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

// The parts as a multipart/form-data body, in order. Every file is opened here and read only
// while the body goes out, never whole into memory. Null when a file cannot be opened; its
// path is then in unopenedFile.
std::unique_ptr<QHttpMultiPart> makeFormData(const std::vector<FormPart>& parts,
                                             QString& unopenedFile);

}  // namespace tolvane::net
