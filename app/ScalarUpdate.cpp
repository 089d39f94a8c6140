// The unattended update: at every start the configured image goes into the hub.

#include "app/AppDelegate.h"
#include "app/FilePanels.h"
#include "props/ui/ToolTip.h"

#include <QFile>
#include <QLineEdit>

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
    m_worker.start([this] { updateScalar(); });
}

void AppDelegate::updateScalar()
{
    if (!fwbinPath.isEmpty()) {
        FwImage_LoadFile(m_scalarImage,
                         m_place.resourcePath + "//" + QFile::encodeName(fwbinPath).toStdString());
    }
    runUpdate(m_scalarImage, *nstextfd_Scalar);
}

} // namespace vornadel
