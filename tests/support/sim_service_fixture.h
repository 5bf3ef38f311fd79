#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "barrage/barrage_server.h"
#include "platform/sim_platform.h"
#include "service/vx_net_service_imp.h"
#include "support/recording_observer.h"
#include "support/scoped_env.h"
#include "support/wait.h"

// A running simulated platform and a service pointed at it, built fresh for every test.
class SimServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        sim_ = std::make_unique<tolvane::sim::SimPlatform>(workspace_.path());
        startPlatform();
        if (HasFatalFailure()) {
            return;
        }
        service_ = std::make_unique<VxNetServiceImp>(observer(), nullptr);
    }
    void TearDown() override {
        service_.reset();
        sim_.reset();
    }

    // What runs before the service is made, and the host the service reports to.
    virtual void startPlatform() { ASSERT_TRUE(sim_->start()); }
    virtual ServiceObserver* observer() { return nullptr; }

    VxNetServiceImp& service() { return *service_; }
    tolvane::sim::SimPlatform& sim() { return *sim_; }
    tolvane::sim::SimPlatformState& platform() { return sim_->state(); }
    // Logs in as the simulator's anchor.
    void login() {
        std::string error, token;
        ASSERT_EQ(service_->login("anchor", "secret123", error, token), 0) << error;
    }
    // The session token and the login library's last message, as a host reads them.
    std::string token() {
        std::string text;
        service_->getToken(text);
        return text;
    }
    std::string lastLoginMessage() {
        std::string text;
        service_->getLastLoginMessage(text);
        return text;
    }

    IsolatedWorkspace workspace_;
    std::unique_ptr<tolvane::sim::SimPlatform> sim_;
    std::unique_ptr<VxNetServiceImp> service_;
};

// The same, with the service already logged in as the simulator's anchor.
class LoggedInSimServiceTest : public SimServiceTest {
protected:
    void SetUp() override {
        SimServiceTest::SetUp();
        if (!HasFatalFailure()) {
            login();
        }
    }

    std::vector<tolvane::sim::SimRequest> requestsTo(const char* path) {
        return sim().http().requestLog().to(path);
    }
    // The latest request to `path`; a test that expected one and got none fails here.
    tolvane::sim::SimRequest lastRequestTo(const char* path) {
        const auto requests = requestsTo(path);
        EXPECT_FALSE(requests.empty()) << path;
        return requests.empty() ? tolvane::sim::SimRequest() : requests.back();
    }
};

// The room the simulator's anchor account owns.
constexpr int kAnchorRoom = 880001;

// Logged in and with the anchor's own room loaded, as the room operations need.
class AnchorRoomSimServiceTest : public LoggedInSimServiceTest {
protected:
    void SetUp() override {
        LoggedInSimServiceTest::SetUp();
        if (HasFatalFailure()) {
            return;
        }
        service().refreshRoomInfo();
        ASSERT_EQ(service().getRoomId(), kAnchorRoom);
    }
};

// A service that reports to a recording host, with the simulator's barrage server running.
class BarrageSimServiceTest : public SimServiceTest {
protected:
    void startPlatform() override {
        SimServiceTest::startPlatform();
        ASSERT_TRUE(sim_->startBarrageServers(1));
    }
    ServiceObserver* observer() override { return &observer_; }
    // Starts the barrage connection and waits for its login reply to reach the host.
    void startAndWait() {
        ASSERT_EQ(service_->startBarrage(), 0);
        ASSERT_TRUE(waitUntil([&] { return !observer_.events("status ").empty(); }, 5000));
    }
    sim::BarrageServer& server() { return sim_->barrageServer(0); }

    RecordingObserver observer_;
};
