#include <gtest/gtest.h>

#include <QCoreApplication>

// The module's objects need a Qt application on the test thread.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
