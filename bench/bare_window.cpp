// The cheapest window with a text in it: the baseline for the tool's start.

#include <QApplication>
#include <QPlainTextEdit>

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QPlainTextEdit text("Detect Zel Hub : Success\nfwVer:0100");
    text.setReadOnly(true);
    text.setWindowTitle("Bare window");
    text.resize(1200, 660);
    text.show();
    return QApplication::exec();
}
