#pragma once

#include "app/FlowWorker.h"
#include "app/LeaveProcess.h"
#include "app/MainThread.h"
#include "app/WindowControls.h"
#include "config/ToolPlace.h"
#include "editor/TableViewController.h"
#include "firmware/FwImage.h"
#include "platform/Platform.h"

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

/// The one application object, on the main thread: start-up, window, actions. Its controls are its
/// own members.
class AppDelegate final : public QObject, public WindowControls
{
public:
    /// `titleSuffix` follows the version in the window title. Nothing happens before
    /// applicationDidFinishLaunching().
    AppDelegate(Platform& platform, ToolPlace place, QString titleSuffix);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    /// The tool has one window and ends with it.
    static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }

    /// Ends what runs in the background: no request follows the one in flight, no wait goes on.
    /// False when a worker is still held by its transfer after a grace of 3 s; then only ending the
    /// process ends it.
    bool shutDown();

    QWidget* window() const { return m_window.get(); }

    // Where the tool lies and what its configuration says; filled at launch, only read afterwards.
    QString apPath;                ///< directory that contains the bundle
    QString resourcePath;          ///< directory of config.ini
    QString appTitle;              ///< without the version
    std::int32_t isScalarMode = 0; ///< only 1 means scalar mode
    std::string fwbinPath; ///< image of the run at start, below resourcePath, in bytes; may be
                           ///< empty
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

    // Easy update.
    void chooseFw_EasyUpdate();
    void updateFw_EasyUpdate();
    void updateFunc(); ///< on a flow's thread

    // Scalar update.
    void chooseScalarUpdateFw();
    void MP_UpdateScalar(); ///< from any thread
    void updateScalar();    ///< on a flow's thread
    /// Ends the process at once with a status, from any thread; what a success of the scalar update
    /// leads to.
    std::function<void(int status)> endProcess = leaveProcess;

    // Driver. Main thread, which is blocked meanwhile.
    void LoadUpdateDriver();
    void UnloadUpdateDriver();
    void RebootOrNot();
    void Reboot();
    QString driverCopy = "/tmp/HubUpdaterDriver.kext"; ///< where the command that copies the bundle
                                                       ///< puts it
    QString bootArgumentsFile = "/tmp/nvram_setting.dat"; ///< their snapshot, taken at the first
                                                          ///< start

    // Flash page. Main thread, but for the two flows.
    void read_FwFlash();
    void readFunc_FwFlash(); ///< on a flow's thread
    void readFinished_FwFlash();
    void load_FwFlash();
    void erase_FwFlash();
    void eraseFunc_FwFlash(); ///< on a flow's thread
    void save_FwFlash();

    // Identity editing. Main thread.
    void controlTextDidChange(QLineEdit* field); ///< what a person typed, not what the program put
                                                 ///< in
    void VID_HSPID_SSPID_Changed_FwFlash(QLineEdit* field);
    void textDidChange_ManuProSN(QLineEdit* field);
    bool modifyFwBuffer_from_UI();

    // The two selections above the properties. Main thread.
    void comboBoxSelectionDidChange(QComboBox* sender);
    void ICTypeCombBox_SelectedChanged();
    void PageNameCombBox_SelectedChanged();

    std::unique_ptr<TableViewController> tbViewController;

    /// Where work for the main thread is handed in.
    MainThread& mainThread() { return m_mainThread; }

private:
    void initFromIni();
    void MyLayoutUI();
    void takeBootArgumentsSnapshot();

    std::string textOfField(const QLineEdit& field);
    void startFlow(std::function<void()> flow); ///< the buttons are off; they are on again when it
                                                ///< cannot be started
    void sayThatNothingStarts();
    void runScript(const char* name);

    void connectPropertyEditor();
    void fillSelections();
    void selectFirstPage();
    void openSavePanel();

    Platform& m_platform;
    ToolPlace m_place;
    QString m_titleSuffix;

    FwImage m_updateImage;
    FwImage m_scalarImage;
    FwImage m_flashImage;

    std::atomic<bool> m_shuttingDown = false;
    MainThread m_mainThread;
    FlowWorker m_worker;
    std::atomic<bool> m_attachPosted = false; // a callback is on its way to the main thread and has
                                              // not begun
    std::atomic<bool> m_detachPosted = false;
    std::unique_ptr<QWidget> m_window; // last: the controls go before anything they are used with
};

/// Reaches the one delegate from plain functions; null before launch.
extern AppDelegate* AppDelegateRef;

} // namespace vornadel
