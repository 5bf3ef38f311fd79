#include "http/sim_http_server.h"

#include <httplib.h>
#include <strings.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <functional>

#include "http/sim_builtin_routes.h"
#include "http/sim_connection_closer.h"
#include "http/sim_replies.h"
#include "http/sim_signature.h"

namespace tolvane::sim {

namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr std::size_t kWorkerThreads = 16;
constexpr auto kStartTimeout = std::chrono::seconds(5);
// Idle keep-alive connections hold a worker each; a short limit keeps stop() quick.
constexpr time_t kKeepAliveSeconds = 1;
// Requests a kept connection serves, about what production web servers allow; the library's
// own five would make a client reconnect in the middle of a burst that no real server breaks.
constexpr std::size_t kKeepAliveRequests = 100;

const char kMalformedBody[] = "<html><body><h1>502 Bad Gateway</h1></body></html>";

bool isPseudoHeader(const std::string& name) {
    // httplib adds the peer's address as headers; they never came from the client.
    for (const char* pseudo : {"REMOTE_ADDR", "REMOTE_PORT", "LOCAL_ADDR", "LOCAL_PORT"}) {
        if (name == pseudo) {
            return true;
        }
    }
    return false;
}

SimPairs parseUrlEncoded(const std::string& text) {
    SimPairs pairs;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find('&', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        const std::string item = text.substr(start, end - start);
        if (!item.empty()) {
            const std::size_t equals = item.find('=');
            const std::string key = item.substr(0, equals);
            const std::string value = equals == std::string::npos ? "" : item.substr(equals + 1);
            pairs.emplace_back(httplib::detail::decode_url(key, true),
                               httplib::detail::decode_url(value, true));
        }
        start = end + 1;
    }
    return pairs;
}

SimRequest toSimRequest(const httplib::Request& in, const char* scheme) {
    SimRequest request;
    request.scheme = scheme;
    request.method = in.method;
    request.path = in.path;
    const std::size_t question = in.target.find('?');
    if (question != std::string::npos) {
        request.rawQuery = in.target.substr(question + 1);
        request.query = parseUrlEncoded(request.rawQuery);
    }
    for (const auto& header : in.headers) {
        if (!isPseudoHeader(header.first)) {
            request.headers.push_back(header);
        }
    }
    request.body = in.body;
    const std::string contentType = in.get_header_value("Content-Type");
    if (strncasecmp(contentType.c_str(), "application/x-www-form-urlencoded", 33) == 0) {
        request.form = parseUrlEncoded(in.body);
    } else if (in.is_multipart_form_data()) {
        // Parts with a file name are uploads; the others are form items, signed like any.
        for (const auto& [name, part] : in.files) {
            if (part.filename.empty()) {
                request.form.emplace_back(name, part.content);
            } else {
                request.uploads.push_back({name, part.filename, part.content_type, part.content});
            }
        }
    }
    return request;
}

std::string contentTypeOf(const std::string& body) {
    return !body.empty() && (body.front() == '{' || body.front() == '[') ? "application/json"
                                                                         : "text/plain";
}

// Streams `size` bytes of {"error":0,"data":"xxx…"} without holding them in memory.
void setLargeBody(httplib::Response& out, std::size_t size) {
    static const std::string head = "{\"error\":0,\"data\":\"";
    static const std::string tail = "\"}";
    size = std::max(size, head.size() + tail.size());
    out.status = 200;
    out.set_content_provider(
        size, "application/json",
        [size](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
            std::string chunk;
            const std::size_t end = offset + std::min<std::size_t>(length, 64 * 1024);
            const std::size_t fillEnd = size - tail.size();
            for (std::size_t at = offset; at < end;) {
                if (at < head.size()) {
                    const std::size_t n = std::min(head.size() - at, end - at);
                    chunk.append(head, at, n);
                    at += n;
                } else if (at < fillEnd) {
                    const std::size_t n = std::min(fillEnd - at, end - at);
                    chunk.append(n, 'x');
                    at += n;
                } else {
                    const std::size_t n = std::min(size - at, end - at);
                    chunk.append(tail, at - fillEnd, n);
                    at += n;
                }
            }
            return sink.write(chunk.data(), chunk.size());
        });
}

// Announces the whole body, sends half of it, then gives up so httplib closes the socket.
void setDroppedBody(httplib::Response& out, std::string body) {
    if (body.size() < 2) {
        body = "{\"error\":0,\"data\":\"dropped\"}";
    }
    const std::size_t size = body.size();
    out.status = 200;
    out.set_content_provider(
        size, "application/json",
        [body = std::move(body)](std::size_t offset, std::size_t, httplib::DataSink& sink) {
            if (offset == 0) {
                sink.write(body.data(), body.size() / 2);
            }
            return false;
        });
}

// Announces the whole body and hands it out one byte at a time; `pause` returns false when
// the server is stopping, which ends the reply.
void setTrickledBody(httplib::Response& out, std::string body, int intervalMs,
                     std::function<bool(std::chrono::milliseconds)> pause) {
    if (body.empty()) {
        body = "{\"error\":0,\"data\":\"trickled\"}";
    }
    const std::size_t size = body.size();
    out.status = 200;
    out.set_content_provider(size, "application/json",
                             [body = std::move(body), intervalMs, pause = std::move(pause)](
                                 std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                 if (offset > 0 && !pause(std::chrono::milliseconds(intervalMs))) {
                                     return false;
                                 }
                                 return sink.write(body.data() + offset, 1);
                             });
}

// A chunked reply that stops after its first half without the closing chunk.
void setTruncatedChunks(httplib::Response& out, std::string body) {
    if (body.size() < 2) {
        body = "{\"error\":0,\"data\":\"truncated\"}";
    }
    out.status = 200;
    out.set_chunked_content_provider(
        "application/json", [body = std::move(body)](std::size_t offset, httplib::DataSink& sink) {
            if (offset == 0) {
                sink.write(body.data(), body.size() / 2);
                return true;
            }
            return false;
        });
}

void writeReply(httplib::Response& out, const SimReply& reply) {
    out.status = reply.status;
    out.set_content(reply.body, reply.contentType);
}

void writeFault(httplib::Response& out, const SimFault& fault,
                std::function<bool(std::chrono::milliseconds)> pause) {
    switch (fault.kind) {
        case SimFault::Kind::Trickle:
            setTrickledBody(out, fault.body, fault.intervalMs, std::move(pause));
            break;
        case SimFault::Kind::TruncatedChunks:
            setTruncatedChunks(out, fault.body);
            break;
        case SimFault::Kind::Status: {
            const std::string body = !fault.body.empty()
                                         ? fault.body
                                         : jsonReply(fault.status, {{"error", fault.status},
                                                                    {"data", "simulated status"}})
                                               .body;
            out.status = fault.status;
            out.set_content(body, contentTypeOf(body));
            break;
        }
        case SimFault::Kind::Malformed:
            out.status = 200;
            out.set_content(kMalformedBody, "text/html");
            break;
        case SimFault::Kind::LargeBody:
            setLargeBody(out, fault.size);
            break;
        case SimFault::Kind::DropConnection:
            setDroppedBody(out, okReply(QJsonValue(QStringLiteral("dropped"))).body);
            break;
        case SimFault::Kind::CloseBeforeReply:
            // Only reached when the connection could not be closed; a test should see it.
            writeReply(out, errorReply(500, QStringLiteral("connection not found to close")));
            out.status = 500;
            break;
        case SimFault::Kind::None:
            break;
    }
}

}  // namespace

SimHttpServer::SimHttpServer(int environment) : environment_(environment) {
    addBuiltinRoutes(routes_);
}

SimHttpServer::~SimHttpServer() {
    stop();
}

bool SimHttpServer::start(int port) {
    return startListener(http_, std::make_unique<httplib::Server>(), port, "http");
}

bool SimHttpServer::startHttps(const SimTlsIdentity& identity, int port) {
    auto server =
        std::make_unique<httplib::SSLServer>(identity.certFile.c_str(), identity.keyFile.c_str());
    if (!server->is_valid()) {
        return false;
    }
    return startListener(https_, std::move(server), port, "https");
}

bool SimHttpServer::startListener(Listener& listener, std::unique_ptr<httplib::Server> server,
                                  int port, const char* scheme) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (listener.server) {
            return false;
        }
        stopRequested_ = false;
    }
    server->new_task_queue = [] { return new httplib::ThreadPool(kWorkerThreads); };
    server->set_keep_alive_timeout(kKeepAliveSeconds);
    server->set_keep_alive_max_count(kKeepAliveRequests);
    // Headers and body go out in separate writes; Nagle would hold the body for the ACK.
    server->set_tcp_nodelay(true);
    const auto handler = [this, scheme](const httplib::Request& in, httplib::Response& out) {
        handle(in, out, scheme);
    };
    server->Get(".*", handler);
    server->Post(".*", handler);
    server->Put(".*", handler);
    server->Delete(".*", handler);
    server->Patch(".*", handler);
    server->Options(".*", handler);

    // httplib listens with a backlog of 5; a burst of concurrent clients would see dropped
    // SYNs and a one-second retry, so the socket is kept to widen the backlog after bind.
    int socketFd = -1;
    server->set_socket_options([&socketFd](socket_t fd) {
        const int on = 1;
        setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
        socketFd = fd;
    });
    const int bound = port == 0 ? server->bind_to_any_port(kLoopback)
                                : (server->bind_to_port(kLoopback, port) ? port : -1);
    if (bound <= 0) {
        return false;
    }
    if (socketFd >= 0) {
        ::listen(socketFd, SOMAXCONN);
    }
    httplib::Server* raw = server.get();
    std::thread thread([raw] { raw->listen_after_bind(); });
    // stop() is a no-op until the accept loop runs, so wait for it before anyone can stop.
    const auto deadline = std::chrono::steady_clock::now() + kStartTimeout;
    while (!raw->is_running() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (!http_.server && !https_.server) {
        httpsFirst_ = std::strcmp(scheme, "https") == 0;
    }
    listener.server = std::move(server);
    listener.thread = std::move(thread);
    listener.port = bound;
    return true;
}

void SimHttpServer::stop() {
    Listener http;
    Listener https;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopRequested_ = true;
        http = std::move(http_);
        https = std::move(https_);
        http_ = Listener();
        https_ = Listener();
    }
    stopping_.notify_all();
    stopListener(http);
    stopListener(https);
}

void SimHttpServer::stopListener(Listener& listener) {
    if (!listener.server) {
        return;
    }
    listener.server->stop();
    if (listener.thread.joinable()) {
        listener.thread.join();
    }
    listener.server.reset();
}

bool SimHttpServer::isRunning() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return http_.server != nullptr || https_.server != nullptr;
}

int SimHttpServer::httpPort() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return http_.server ? http_.port : 0;
}

int SimHttpServer::httpsPort() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return https_.server ? https_.port : 0;
}

std::string SimHttpServer::httpOrigin() const {
    const int port = httpPort();
    return port == 0 ? std::string() : "http://127.0.0.1:" + std::to_string(port);
}

std::string SimHttpServer::httpsOrigin() const {
    const int port = httpsPort();
    return port == 0 ? std::string() : "https://127.0.0.1:" + std::to_string(port);
}

std::string SimHttpServer::origin() const {
    bool httpsFirst = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        httpsFirst = httpsFirst_ || !http_.server;
    }
    return httpsFirst ? httpsOrigin() : httpOrigin();
}

bool SimHttpServer::waitUnlessStopping(std::chrono::milliseconds delay) {
    std::unique_lock<std::mutex> lock(mutex_);
    return !stopping_.wait_for(lock, delay, [this] { return stopRequested_; });
}

std::optional<SimRoute> SimHttpServer::checkRoute(SimRequest& request) const {
    std::optional<SimRoute> route = routes_.find(request.method, request.path);
    request.routed = route.has_value();
    request.authChecked = route && route->rule != SimSignRule::None;
    request.authOk =
        !route || verifySignature(route->rule, route->signingPath, request, environment_);
    return route;
}

SimReply SimHttpServer::answer(const std::optional<SimRoute>& route, const SimRequest& request) {
    if (!route) {
        SimReply reply = errorReply(404, "no route for " + QString::fromStdString(request.path));
        reply.status = 404;
        return reply;
    }
    if (!request.authOk) {
        return errorReply(kAuthFailedCode, kAuthFailedText);
    }
    try {
        return route->handler ? route->handler(request) : okReply(QJsonValue());
    } catch (const std::exception& error) {
        SimReply reply = errorReply(500, QString::fromUtf8(error.what()));
        reply.status = 500;
        return reply;
    }
}

void SimHttpServer::handle(const httplib::Request& in, httplib::Response& out, const char* scheme) {
    SimRequest request = toSimRequest(in, scheme);
    const std::optional<SimFault> fault = faults_.take(request.path);
    const std::optional<SimRoute> route = checkRoute(request);
    // A faulted request is logged and its signature checked, but never reaches the service.
    const bool replaced = fault && fault->kind != SimFault::Kind::None;
    const SimReply reply = replaced ? SimReply() : answer(route, request);
    log_.add(request);

    if (fault && fault->delayMs > 0 &&
        !waitUnlessStopping(std::chrono::milliseconds(fault->delayMs))) {
        out.status = 503;
        return;
    }
    if (!replaced) {
        writeReply(out, reply);
        return;
    }
    if (fault->kind == SimFault::Kind::CloseBeforeReply && closeConnectionOf(in)) {
        return;
    }
    writeFault(out, *fault,
               [this](std::chrono::milliseconds delay) { return waitUnlessStopping(delay); });
}

}  // namespace tolvane::sim
