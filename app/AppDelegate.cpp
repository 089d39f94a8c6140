#include "app/AppDelegate.h"

#include "app/ConsoleLog.h"
#include "app/Controls.h"
#include "app/FileNames.h"
#include "app/GeneralFunction.h"
#include "config/ToolConfig.h"
#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"

#include <QFile>
#include <QLineEdit>
#include <QWidget>

#include <chrono>
#include <utility>

namespace vornadel
{

AppDelegate* AppDelegateRef = nullptr;

namespace
{

/// How long a transfer in flight may delay the end of the program.
constexpr std::chrono::seconds kShutDownGrace{3};

constexpr const char* kNoThread = "the system cannot start a thread";

/// Keeps the machine awake, if the system can.
std::unique_ptr<SleepHold> stayAwake(SleepInhibitor* inhibitor)
{
    std::string problem;
    std::unique_ptr<SleepHold> hold =
        inhibitor == nullptr ? nullptr : inhibitor->hold("A hub is being worked on", problem);
    if (!problem.empty()) {
        ConsoleLog("The machine may go to sleep: " + QString::fromStdString(problem));
    }
    return hold;
}

} // namespace

AppDelegate::AppDelegate(Platform& platform, ToolPlace place, QString titleSuffix)
    : m_platform(platform), m_place(std::move(place)), m_titleSuffix(std::move(titleSuffix))
{
}

AppDelegate::~AppDelegate()
{
    m_platform.usb.unwatch();
    tbViewController.reset(); // uses the views and the image, so it goes first
    if (AppDelegateRef == this) {
        AppDelegateRef = nullptr;
    }
}

void AppDelegate::applicationDidFinishLaunching()
{
    AppDelegateRef = this;
    const QString place = nameText(m_place.bundlePath);
    apPath = m_place.bundled ? GeneralFunction::GetDirFromPath(place) : place;
    resourcePath = nameText(m_place.resourcePath);

    const QString version = GeneralFunction::GetCurrentSystemVersion(m_platform.systemVersion);
    _bNeedSignDriver = version.contains(u"10.10");
    ConsoleLog("Current System Version: " + version);
    ConsoleLog("AP Path :" + shownName(nameBytes(apPath)) + " ");
    ConsoleLog("Resource Path :" + shownName(m_place.resourcePath) + " ");
    GeneralFunction::PrintNormalLog(m_platform.shell, version);
    takeBootArgumentsSnapshot();

    initFromIni();
    MyLayoutUI();
    RegisterNotifycation();
    // The update disables the buttons too, but from its own thread, which may be too late.
    SetButtonStatus(false);
    if (!m_worker.startBeside([this] { MP_UpdateScalar(); })) {
        sayThatNothingStarts(kNoThread);
    }
}

void AppDelegate::startFlow(std::function<void()> flow)
{
    // No script withdraws access to the hub in the middle of the flow.
    std::shared_ptr<HubHold> hold = m_platform.privileged.holdHub();
    if (hold == nullptr) {
        sayThatNothingStarts("access to the hub is being withdrawn");
    } else if (!m_worker.start(
                   [hold = std::move(hold), flow = std::move(flow), sleep = m_platform.sleep] {
                       const std::unique_ptr<SleepHold> awake = stayAwake(sleep);
                       flow();
                   })) {
        sayThatNothingStarts(kNoThread);
    }
}

void AppDelegate::sayThatNothingStarts(const char* why)
{
    m_mainThread.postAndWait([this, why] {
        resetProgressInfo();
        appendProgressInfo_Red(QString("Fail to start: %1\n").arg(why));
        SetButtonStatus(true);
        m_notice.ended();
    });
}

std::string AppDelegate::textOfField(const QLineEdit& field)
{
    // Shared, because the task outlives this call if the window closes during the wait.
    const auto text = std::make_shared<std::string>();
    m_mainThread.postAndWait([text, &field] { *text = field.text().toStdString(); });
    return *text;
}

void AppDelegate::wirePropertyEditor()
{
    const PropertyViews views{tbProperties_Detail, cbICType,       txtViewDesc_Detail,
                              txtViewBin_Detail,   txtVID_FwFlash, txtSSPID_FwFlash,
                              txtHSPID_FwFlash,    txtVer_FwFlash, txtManu_FwFlash,
                              txtPro_FwFlash,      txtSN_FwFlash,  txtContainerID_FwFlash};
    tbViewController = std::make_unique<TableViewController>(
        views, m_flashPage.image(), nameBytes(apPath),
        PropertyVoices{ConsoleLog, GeneralFunction::AlertString});
    m_selection.fill();
    m_identity.connectFields();
    m_edits.connectHistory();
}

void AppDelegate::takeBootArgumentsSnapshot()
{
    const std::string file = QFile::encodeName(bootArgumentsFile).toStdString();
    // A dangling link does not exist, and the shell would create what it points to.
    if (!m_platform.shell.exists(file) && m_platform.shell.mayAppend(file)) {
        RunBufferedCommand(m_platform.shell, ("nvram boot-args >> " + file).c_str());
    }
}

void AppDelegate::initFromIni()
{
    const ToolConfig config = readToolConfig(m_place.resourcePath + "/config.ini");
    appTitle = QString::fromStdString(config.appTitle);
    isScalarMode = config.isScalarMode;
    fwbinPath = config.fwbinPath;

    if (!config.problem.empty()) {
        ConsoleLog(shownName(config.problem));
    }
    for (const SupportedIdEntry& entry : SupportedIdList) {
        if (entry.valid == 1) {
            ConsoleLog(QString::asprintf("vid:0x%x   ;    sspid:0x%x ;    hspid:0x%x \n", entry.vid,
                                         entry.sspid, entry.hspid));
        }
    }
    ConsoleLog("App title: " + appTitle);
    ConsoleLog("Fw Bin: " + shownName(fwbinPath));
    ConsoleLog(QString::asprintf("ScalarMode: %d", isScalarMode));
}

bool AppDelegate::shutDown()
{
    m_shuttingDown = true;
    m_platform.usb.unwatch();
    Hub_Abandon();
    m_platform.clock.interrupt();
    m_mainThread.stopWaiting();
    return m_worker.finish(kShutDownGrace);
}

} // namespace vornadel
