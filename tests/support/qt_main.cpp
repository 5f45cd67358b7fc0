#include <gtest/gtest.h>

#include <QCoreApplication>

/// For test programs that need Qt's event loop or processes but no window.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
