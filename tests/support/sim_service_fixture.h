#pragma once

#include <gtest/gtest.h>

#include <memory>

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
