#pragma once

#include <httplib.h>

#include <QCryptographicHash>
#include <QUrl>
#include <chrono>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

// One part of a multipart/form-data body as it arrived; the content only as its hash.
struct ReceivedPart {
    std::string name;
    std::string filename;
    std::string contentType;
    QByteArray sha256;

    bool operator==(const ReceivedPart& other) const {
        return name == other.name && filename == other.filename &&
               contentType == other.contentType && sha256 == other.sha256;
    }
};

inline void PrintTo(const ReceivedPart& part, std::ostream* os) {
    *os << '{' << part.name << ", " << part.filename << ", " << part.contentType << ", "
        << part.sha256.toHex().left(12).toStdString() << '}';
}

// Reads multipart/form-data POSTs to /upload as they stream in, hashing each part instead of
// keeping it, so that the server neither loses a part's headers nor holds an upload in memory.
class FormRecorder {
public:
    FormRecorder() {
        server_.Post("/upload", [this](const httplib::Request& request, httplib::Response& response,
                                       const httplib::ContentReader& read) {
            std::vector<ReceivedPart> parts;
            QCryptographicHash hash(QCryptographicHash::Sha256);
            const auto finishPart = [&] {
                if (!parts.empty()) {
                    parts.back().sha256 = hash.result();
                    hash.reset();
                }
            };
            read(
                [&](const httplib::MultipartFormData& header) {
                    finishPart();
                    parts.push_back({header.name, header.filename, header.content_type, {}});
                    return true;
                },
                [&](const char* data, size_t length) {
                    hash.addData(data, static_cast<int>(length));
                    return true;
                });
            finishPart();
            const std::lock_guard<std::mutex> lock(mutex_);
            contentTypes_.push_back(request.get_header_value("Content-Type"));
            forms_.push_back(std::move(parts));
            response.set_content("{\"error\":0}", "application/json");
        });
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        while (!server_.is_running()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    ~FormRecorder() {
        server_.stop();
        thread_.join();
    }

    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/upload").arg(port_)); }
    std::vector<std::vector<ReceivedPart>> forms() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return forms_;
    }
    std::vector<std::string> contentTypes() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return contentTypes_;
    }

private:
    httplib::Server server_;
    std::thread thread_;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::vector<std::vector<ReceivedPart>> forms_;
    std::vector<std::string> contentTypes_;
};
