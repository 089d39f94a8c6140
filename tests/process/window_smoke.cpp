// A user with a mouse: selects an image, presses "Update" and reads the window's text. The events
// come from the X server, so this runs on a separate display; only the hub and its clock are
// simulated.
//
//   window_smoke IMAGE

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "app/Tool.h"
#include "tests/process/MouseScript.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>

#include <cstdio>
#include <filesystem>

namespace
{

using namespace vornadel;
using namespace vornadel::test;

void writeScript(MouseScript& script, AppDelegate& tool, const QString& image)
{
    const auto idle = [&tool] {
        return tool.btnUpdate_EasyUpdate->isEnabled() && tool.window()->isActiveWindow();
    };
    script.when("the start-up run to end", idle, [&tool] { click(tool.btnSelect_EasyUpdate); });
    script.answerFileDialog(image);
    script.when(
        "the image in the window",
        [&tool, image] { return tool.txtFw_EasyUpdate->text() == image; },
        [&tool] { tool.resetProgressInfo(); });
    script.when("the window to be active again", idle,
                [&tool] { click(tool.btnUpdate_EasyUpdate); });
    script.when(
        "the update to succeed",
        [&tool, idle] {
            return idle() &&
                   tool.nstfUpdateInfo_UpdateFW->toPlainText().endsWith("Update FW Success\n");
        },
        [&tool] { tool.window()->close(); });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        return 64;
    }
    const QApplication application(argc, argv);
    const QString image = QFile::decodeName(argv[1]);
    MouseMachine machine;
    MouseScript script;
    const int status = runTool(machine.platform(), toolPlaceOf(std::filesystem::canonical(argv[0])),
                               " [simulated hub]", [&](AppDelegate& tool) {
                                   machine.use(tool);
                                   writeScript(script, tool, image);
                                   script.start();
                               });
    QFile file(image);
    const bool read = file.open(QIODevice::ReadOnly);
    const std::vector<std::uint8_t> flash = machine.hub().flash();
    if (!read || file.readAll() != QByteArray(reinterpret_cast<const char*>(flash.data()),
                                              static_cast<qsizetype>(flash.size()))) {
        std::fprintf(stderr, "window_smoke: the flash is not equal to the image\n");
        return 1;
    }
    return script.finished() ? status : 1;
}
