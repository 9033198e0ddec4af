// Shared main of the test binaries: a Qt application for the few widget tests, and the
// built-in message catalogue loaded as at program start.
#include <gtest/gtest.h>

#include <QApplication>

#include "language/messages.h"

int main(int argc, char** argv) {
    // Tests never need a display; test discovery at build time runs without one.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    zel::load_default_messages();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
