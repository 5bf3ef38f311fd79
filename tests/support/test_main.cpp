#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <memory>

#include "support/scoped_env.h"

namespace {

// Every test runs in a workspace of its own, so that its log lines and default.data are its own
// and no service it builds reaches a real host; a test may still nest one of its own inside.
class WorkspacePerTest : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo&) override {
        workspace_ = std::make_unique<IsolatedWorkspace>();
    }
    void OnTestEnd(const ::testing::TestInfo&) override { workspace_.reset(); }

    std::unique_ptr<IsolatedWorkspace> workspace_;
};

}  // namespace

// The module's objects need a Qt application on the test thread.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    // Logs written outside a test's own workspace stay in this run, not the machine's temp.
    QTemporaryDir privateTemp;
    if (!privateTemp.isValid()) {
        return 1;
    }
    qputenv("TMPDIR", privateTemp.path().toLocal8Bit());
    ::testing::UnitTest::GetInstance()->listeners().Append(new WorkspacePerTest);
    return RUN_ALL_TESTS();
}
