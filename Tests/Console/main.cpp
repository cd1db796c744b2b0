#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    // There may be no display where the tests run, and none is needed.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    return RUN_ALL_TESTS();
}
