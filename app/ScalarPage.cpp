#include "app/ScalarPage.h"

#include "app/AppDelegate.h"
#include "app/FilePanels.h"
#include "app/WindowReporter.h"
#include "editor/ToolTip.h"
#include "flows/FirmwareUpdate.h"
#include "flows/ScalarUpdate.h"

#include <QFile>
#include <QLineEdit>

#include <chrono>
#include <cstdlib>

namespace vornadel
{

namespace
{

/// How long a success is on display before the window ends by itself.
constexpr std::chrono::seconds kScalarFarewell{5};

} // namespace

void ScalarPage::choose()
{
    const QString path = chooseFile(m_tool.window());
    if (path.isEmpty()) {
        return;
    }
    showFile(path);
    FwImage_LoadFile(m_image, QFile::encodeName(path).toStdString());
}

void ScalarPage::showFile(const QString& name)
{
    m_tool.nstextfd_Scalar->setText(name);
    m_tool.nstextfd_Scalar->setToolTip(plainToolTip(name)); // it may be longer than the field
}

void ScalarPage::start()
{
    m_tool.mainThread().postAndWait([this] { m_tool.SetButtonStatus(false); });
    m_tool.startFlow([this] { m_tool.updateScalar(); });
}

void ScalarPage::run()
{
    if (loadConfiguredImage(m_image, m_tool.place().resourcePath, m_tool.fwbinPath)) {
        // It goes into the hub whatever was chosen by hand, so the field names it.
        const QString name = QString::fromStdString(m_tool.fwbinPath);
        m_tool.mainThread().postAndWait([this, name] { showFile(name); });
    }
    WindowReporter reporter(m_tool);
    const bool succeeded =
        updateFirmware(m_image, m_tool.textOfField(*m_tool.nstextfd_Scalar), reporter);
    if (!succeeded) {
        return;
    }
    m_tool.platform().clock.sleep(kScalarFarewell);
    if (!m_tool.isShuttingDown()) { // otherwise the closed window is already ending the process
        m_tool.endProcess(EXIT_SUCCESS);
    }
}

} // namespace vornadel
