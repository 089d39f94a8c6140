#pragma once

#include "app/DetectionPace.h"
#include "app/EasyUpdatePage.h"
#include "app/FlashEdits.h"
#include "app/FlashPage.h"
#include "app/FlowNotice.h"
#include "app/FlowTaskbar.h"
#include "app/FlowWorker.h"
#include "app/IdentityFields.h"
#include "app/LeaveProcess.h"
#include "app/MainThread.h"
#include "app/PropertySelection.h"
#include "app/RecentFiles.h"
#include "app/ScalarPage.h"
#include "app/WindowControls.h"
#include "editor/TableViewController.h"
#include "platform/Platform.h"
#include "platform/ToolPlace.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class QWidget;

namespace vornadel
{

class FocusHolder;

/// The one application object, on the main thread: start-up, window, actions. The controls are its
/// own members. The pages and fields have objects of their own, which carry out the actions.
class AppDelegate final : public QObject, public WindowControls
{
public:
    /// `titleSuffix` follows the version in the window title. applicationDidFinishLaunching() does
    /// the rest of the start-up.
    AppDelegate(Platform& platform, ToolPlace place, QString titleSuffix);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    /// The tool has one window and ends with it.
    static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }

    /// Ends the background work: no request follows the one in flight, and every wait ends. False
    /// if a worker is still blocked in its transfer after a grace period of 3 s; then only the end
    /// of the process ends it.
    bool shutDown();

    QWidget* window() const { return m_window.get(); }

    // Where the tool lies, and its configuration. Set at launch, only read afterwards. The paths
    // are texts of nameText().
    QString apPath;                ///< directory that contains the bundle
    QString resourcePath;          ///< directory of config.ini
    QString appTitle;              ///< without the version
    std::int32_t isScalarMode = 0; ///< only 1 means scalar mode
    /// Image for the update at start, below resourcePath, in the file system's bytes; may be empty.
    std::string fwbinPath;
    bool _bNeedSignDriver = false; ///< the system's version text contains "10.10"

    // Progress, log and alerts. Main thread.
    void resetProgressInfo();
    void appendProgressInfo_Blue(const QString& text);
    void appendProgressInfo_Red(const QString& text);
    void updateProgressBar(double percent);
    static void showAlert(const QString& message);
    void GetLog();

    /// Enables or disables the ten operation buttons together. Main thread.
    void SetButtonStatus(bool enabled);

    // Detection. Main thread.
    void RegisterNotifycation();
    void DeviceNotification();
    DetectionPace& detectionPace() { return m_detectionPace; }

    // Easy update.
    void chooseFw_EasyUpdate() { m_easyUpdate.choose(); }
    void updateFw_EasyUpdate() { m_easyUpdate.start(); }
    void updateFunc() { m_easyUpdate.run(); } ///< on a flow's thread
    bool modifyFwBuffer_from_UI() { return m_easyUpdate.takeFields(); }

    // Scalar update.
    void chooseScalarUpdateFw() { m_scalar.choose(); }
    void MP_UpdateScalar() { m_scalar.start(); } ///< from any thread
    void updateScalar() { m_scalar.run(); }      ///< on a flow's thread
    /// Ends the process at once, from any thread. Called after a successful scalar update.
    std::function<void(int status)> endProcess = leaveProcess;

    // Driver. They block the main thread, except for the restarts of the hub after an unload.
    void LoadUpdateDriver();
    void UnloadUpdateDriver();
    void RebootOrNot();
    void Reboot();
    QString driverCopy = "/tmp/HubUpdaterDriver.kext";    ///< target of the copy command
    QString bootArgumentsFile = "/tmp/nvram_setting.dat"; ///< the snapshot of the first start

    // Flash page. Main thread, but for the two flows.
    void read_FwFlash() { m_flashPage.read(); }
    void readFunc_FwFlash() { m_flashPage.runRead(); } ///< on a flow's thread
    void readFinished_FwFlash() { m_flashPage.readFinished(); }
    void load_FwFlash() { m_flashPage.load(); }
    void erase_FwFlash() { m_flashPage.erase(); }
    void eraseFunc_FwFlash() { m_flashPage.runErase(); } ///< on a flow's thread
    void save_FwFlash() { m_flashPage.save(); }

    // Identity editing. Main thread.
    /// Called for text that the user entered, not for text set by the program.
    void controlTextDidChange(QLineEdit* field) { m_identity.textChanged(field); }
    void VID_HSPID_SSPID_Changed_FwFlash(QLineEdit* field) { m_identity.idChanged(field); }
    void textDidChange_ManuProSN(QLineEdit* field) { m_identity.stringChanged(field); }

    // The two selections above the properties. Main thread.
    void comboBoxSelectionDidChange(QComboBox* sender) { m_selection.selectionChanged(sender); }
    void ICTypeCombBox_SelectedChanged() { m_selection.typeChanged(); }
    void PageNameCombBox_SelectedChanged() { m_selection.pageChanged(); }
    void selectFirstPage() { m_selection.selectFirstPage(); }
    void showProperty(const PropItem& item) { m_selection.show(item); }

    std::unique_ptr<TableViewController> tbViewController;
    RecentFiles recentFiles;

    // For the objects of the boxes.
    Platform& platform() { return m_platform; }
    const ToolPlace& place() const { return m_place; }
    MainThread& mainThread() { return m_mainThread; }      ///< from any thread
    bool isShuttingDown() const { return m_shuttingDown; } ///< from any thread
    FlowNotice& notice() { return m_notice; }              ///< main thread
    FlowTaskbar& taskbar() { return m_taskbar; }
    /// Runs a flow on its own thread. The caller has disabled the buttons; if no thread can be
    /// started, they are enabled again.
    void startFlow(std::function<void()> flow);
    /// The text of a field, from any thread.
    std::string textOfField(const QLineEdit& field);

private:
    void initFromIni();
    void MyLayoutUI();
    void takeBootArgumentsSnapshot();

    void wirePropertyEditor();
    void sayThatNothingStarts(const char* why);
    void runScript(const char* name);

    Platform& m_platform;
    ToolPlace m_place;
    QString m_titleSuffix;

    EasyUpdatePage m_easyUpdate{*this};
    ScalarPage m_scalar{*this};
    FlashPage m_flashPage{*this};
    IdentityFields m_identity{*this, m_flashPage.image()};
    FlowNotice m_notice{*this};
    FlowTaskbar m_taskbar{m_platform.taskbar};
    PropertySelection m_selection{*this, m_flashPage.image()};
    FlashEdits m_edits{*this};

    std::atomic<bool> m_shuttingDown = false;
    MainThread m_mainThread;
    FlowWorker m_worker;
    // A callback has been posted to the main thread and has not begun yet.
    std::atomic<bool> m_attachPosted = false;
    std::atomic<bool> m_detachPosted = false;
    DetectionPace m_detectionPace{m_platform.clock};
    FocusHolder* m_focusHolder = nullptr; // the window owns it
    // Last, so that the controls are destroyed before their users.
    std::unique_ptr<QWidget> m_window;
};

/// The one delegate, for plain functions; null before launch.
extern AppDelegate* AppDelegateRef;

} // namespace vornadel
