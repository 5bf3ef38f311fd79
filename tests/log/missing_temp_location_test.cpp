#include <gtest/gtest.h>

#include <QFileInfo>

#include "log/log_writer.h"
#include "support/log_reader.h"
#include "support/scoped_env.h"

namespace {

// A temporary location that does not exist yet (a fresh TMPDIR) is made with the rest of the
// log folder instead of costing every line.
TEST(LogWriter, ATemporaryLocationThatDoesNotExistYetIsMade) {
    IsolatedWorkspace workspace;
    const ScopedEnv temp("TMPDIR", (workspace.path() + "/not/made/yet").toLocal8Bit());
    tolvane::log::writeLine(tolvane::log::kMainLog, "kept");
    EXPECT_TRUE(QFileInfo(workspace.path() + "/not/made/yet").isDir());
    EXPECT_EQ(readLogMessages(tolvane::log::kMainLog), QStringList{"kept"});
}

}  // namespace
