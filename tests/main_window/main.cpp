#include <gtest/gtest.h>

#include <QApplication>

#include "main_window/window_look.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    kibo::applyLook(application);
    return RUN_ALL_TESTS();
}
