#include "app/ScalarPage.h"

#include "app/AppDelegate.h"
#include "app/FilePanels.h"
#include "app/ImageInputs.h"
#include "app/WindowReporter.h"
#include "flows/FirmwareUpdate.h"
#include "flows/ScalarUpdate.h"

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

void ScalarPage::connectBox()
{
    takeImages(*m_tool.boxScalar, *m_tool.nsbtnSelect_Scalar, m_tool.recentFiles,
               [this](const std::string& path) { open(path); });
}

void ScalarPage::choose()
{
    const std::string path =
        chooseFile(m_tool.window(), m_tool.recentFiles.folder(RecentFiles::Panel::Scalar));
    if (!path.empty()) {
        open(path);
    }
}

void ScalarPage::open(const std::string& path)
{
    const bool loaded = m_file.load(m_image, path, *m_tool.nstextfd_Scalar);
    m_tool.recentFiles.add(RecentFiles::Panel::Scalar, path, loaded);
    if (!m_tool.fwbinPath.empty()) {
        m_file.yieldsTo(m_tool.fwbinPath, path, *m_tool.nstextfd_Scalar);
    }
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
        m_tool.mainThread().postAndWait(
            [this] { m_file.loaded(m_tool.fwbinPath, *m_tool.nstextfd_Scalar); });
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
