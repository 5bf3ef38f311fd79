#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>

// The module's objects need a Qt application on the test thread.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    // Logs of a test that sets no workspace of its own, and of the programs it starts, land in
    // a folder of this run instead of the machine's temporary location.
    QTemporaryDir privateTemp;
    if (!privateTemp.isValid()) {
        return 1;
    }
    qputenv("TMPDIR", privateTemp.path().toLocal8Bit());
    return RUN_ALL_TESTS();
}
