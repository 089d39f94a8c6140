// The unattended update: at every start the configured image goes into the hub.

#include "flows/ScalarUpdate.h"
#include "app/AppDelegate.h"
#include "app/FilePanels.h"
#include "app/WindowReporter.h"
#include "editor/ToolTip.h"

#include <QLineEdit>

#include <cstdlib>

namespace vornadel
{

void AppDelegate::chooseScalarUpdateFw()
{
    const QString path = chooseFile(m_window.get());
    if (path.isEmpty()) {
        return;
    }
    nstextfd_Scalar->setText(path);
    nstextfd_Scalar->setToolTip(plainToolTip(path)); // it may be longer than the field
    FwImage_LoadFile(m_scalarImage, QFile::encodeName(path).toStdString());
}

void AppDelegate::MP_UpdateScalar()
{
    m_mainThread.postAndWait([this] { SetButtonStatus(false); });
    startFlow([this] { updateScalar(); });
}

void AppDelegate::updateScalar()
{
    WindowReporter reporter(*this);
    const bool succeeded = updateScalarImage(m_scalarImage, m_place.resourcePath, fwbinPath,
                                             textOfField(*nstextfd_Scalar), reporter);
    m_mainThread.postAndWait([this] { SetButtonStatus(true); });
    if (succeeded) {
        m_platform.clock.sleep(kScalarFarewell);
        if (!m_shuttingDown) { // otherwise the window has closed, and the process is ending already
            endProcess(EXIT_SUCCESS);
        }
    }
}

} // namespace vornadel
