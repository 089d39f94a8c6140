#include "app/ScalarPage.h"

#include "app/AppDelegate.h"
#include "app/FilePanels.h"
#include "app/WindowReporter.h"
#include "editor/ToolTip.h"
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
    m_tool.nstextfd_Scalar->setText(path);
    m_tool.nstextfd_Scalar->setToolTip(plainToolTip(path)); // it may be longer than the field
    FwImage_LoadFile(m_image, QFile::encodeName(path).toStdString());
}

void ScalarPage::start()
{
    m_tool.mainThread().postAndWait([this] { m_tool.SetButtonStatus(false); });
    m_tool.startFlow([this] { m_tool.updateScalar(); });
}

void ScalarPage::run()
{
    WindowReporter reporter(m_tool);
    const bool succeeded = updateScalarImage(m_image, m_tool.place().resourcePath, m_tool.fwbinPath,
                                             m_tool.textOfField(*m_tool.nstextfd_Scalar), reporter);
    if (!succeeded) {
        return;
    }
    m_tool.platform().clock.sleep(kScalarFarewell);
    if (!m_tool.isShuttingDown()) { // a closed window is ending the process already
        m_tool.endProcess(EXIT_SUCCESS);
    }
}

} // namespace vornadel
