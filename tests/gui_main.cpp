#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

// Widget tests run in-process on Qt's offscreen platform unless told otherwise.
int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
