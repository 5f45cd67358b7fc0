#include <gtest/gtest.h>

#include <QApplication>

#include "widgets/window_look.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    kibo::applyLook(application);
    return RUN_ALL_TESTS();
}
