#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/sim_platform.h"
#include "service/vx_net_service_imp.h"
#include "support/scoped_env.h"

// A running simulated platform and a service pointed at it, built fresh for every test.
class SimServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        sim_ = std::make_unique<tolvane::sim::SimPlatform>(workspace_.path());
        ASSERT_TRUE(sim_->start());
        service_ = std::make_unique<VxNetServiceImp>(nullptr, nullptr);
    }
    void TearDown() override {
        service_.reset();
        sim_.reset();
    }

    VxNetServiceImp& service() { return *service_; }
    tolvane::sim::SimPlatform& sim() { return *sim_; }
    tolvane::sim::SimPlatformState& platform() { return sim_->state(); }

    IsolatedWorkspace workspace_;
    std::unique_ptr<tolvane::sim::SimPlatform> sim_;
    std::unique_ptr<VxNetServiceImp> service_;
};

// The same, with the service already logged in as the simulator's anchor.
class LoggedInSimServiceTest : public SimServiceTest {
protected:
    void SetUp() override {
        SimServiceTest::SetUp();
        std::string error, token;
        ASSERT_EQ(service().login("anchor", "secret123", error, token), 0) << error;
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
