#include "tests/support/Resources.h"

#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace
{

/// Every warning from Qt is a defect in the window.
void failOnComplaint(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message)
{
    // Except this one: the offscreen screen has no window manager that could use the sizes.
    if (type == QtDebugMsg || type == QtInfoMsg ||
        message.startsWith("This plugin does not support")) {
        return;
    }
    ADD_FAILURE() << "Qt: " << message.toStdString();
}

} // namespace

int main(int argc, char** argv)
{
    vornadel::test::insistOnAnExactHeap(argv);
    testing::InitGoogleTest(&argc, argv);
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    qputenv("QT_QPA_PLATFORM", TEST_SCREEN); // another screen has other sizes
    const QTemporaryDir home; // the file dialog keeps a history in the user's settings
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    qputenv("XDG_RUNTIME_DIR", home.path().toLocal8Bit());
    qInstallMessageHandler(failOnComplaint);
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const int status = RUN_ALL_TESTS();
    qInstallMessageHandler(nullptr);
    return status;
}
