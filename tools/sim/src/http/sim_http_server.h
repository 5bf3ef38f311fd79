#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "http/sim_certificate_authority.h"
#include "http/sim_fault_table.h"
#include "http/sim_records.h"
#include "http/sim_request_log.h"
#include "http/sim_route_table.h"

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace tolvane::sim {

// The platform's web services on loopback: an HTTP listener, an HTTPS listener or both,
// sharing one route table, fault table and request log. Every listener serves on a thread of
// its own; routes and faults may change while it runs.
class SimHttpServer {
public:
    // The environment index decides whether mobile routes expect the test-environment secret.
    explicit SimHttpServer(int environment = 0);
    ~SimHttpServer();
    SimHttpServer(const SimHttpServer&) = delete;
    SimHttpServer& operator=(const SimHttpServer&) = delete;

    // Binds 127.0.0.1 on the port (0: a free one the system picks); false when it cannot.
    bool start(int port = 0);
    bool startHttps(const SimTlsIdentity& identity, int port = 0);
    // Ends delays in progress, stops both listeners and waits for their threads.
    void stop();

    bool isRunning() const;
    // "http://127.0.0.1:PORT", or the HTTPS origin when only HTTPS runs; empty when stopped.
    std::string origin() const;
    std::string httpOrigin() const;
    std::string httpsOrigin() const;
    int httpPort() const;
    int httpsPort() const;

    void setEnvironment(int environment) { environment_ = environment; }
    int environment() const { return environment_; }

    SimRouteTable& routes() { return routes_; }
    SimFaultTable& faults() { return faults_; }
    SimRequestLog& requestLog() { return log_; }

    // Shorthands for the fault table.
    void setFault(const std::string& path, SimFault fault) { faults_.set(path, std::move(fault)); }
    void clearFaults() { faults_.clearAll(); }

private:
    struct Listener {
        std::unique_ptr<httplib::Server> server;
        std::thread thread;
        int port = 0;
    };

    bool startListener(Listener& listener, std::unique_ptr<httplib::Server> server, int port,
                       const char* scheme);
    void stopListener(Listener& listener);
    void handle(const httplib::Request& in, httplib::Response& out, const char* scheme);
    // Finds the route and checks the signature, noting both in the request.
    std::optional<SimRoute> checkRoute(SimRequest& request) const;
    static SimReply answer(const std::optional<SimRoute>& route, const SimRequest& request);
    // Sleeps unless the server stops first; false when it was stopped.
    bool waitUnlessStopping(std::chrono::milliseconds delay);

    std::atomic<int> environment_;
    SimRouteTable routes_;
    SimFaultTable faults_;
    SimRequestLog log_;

    mutable std::mutex mutex_;  // guards the listeners and the stopping flag
    std::condition_variable stopping_;
    bool stopRequested_ = false;
    Listener http_;
    Listener https_;
    bool httpsFirst_ = false;
};

}  // namespace tolvane::sim
