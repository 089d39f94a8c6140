// The hub-information line: whether a supported hub is attached, and which firmware it runs.

#include "app/Detection.h"

#include "app/AppDelegate.h"
#include "app/ConsoleLog.h"
#include "app/Controls.h"
#include "hub/HubDetection.h"

namespace vornadel
{

void DeviceAddedCallback()
{
    ConsoleLog("Enter Device Added\n");
    AppDelegateRef->DeviceNotification();
}

void DeviceRemovedCallback()
{
    ConsoleLog("Enter Device Removed\n");
    AppDelegateRef->DeviceNotification();
}

void AppDelegate::RegisterNotifycation()
{
    m_platform.usb.watch([this](UsbEvent event) {
        const bool attached = event == UsbEvent::Attached;
        std::atomic<bool>& posted = attached ? m_attachPosted : m_detachPosted;
        if (posted.exchange(true)) {
            return; // a pending callback will handle this device too
        }
        m_mainThread.post([this, attached, &posted] {
            m_detectionPace.run([attached, &posted] {
                posted = false;
                attached ? DeviceAddedCallback() : DeviceRemovedCallback();
            });
        });
    });
    DeviceAddedCallback();
    DeviceRemovedCallback();
}

void AppDelegate::DeviceNotification()
{
    const HubDetection hub = Hub_Detect();
    QString text = "Detect Zel Hub: Fail\nPlease Insert Zel Hub Device";
    if (hub.found) {
        text = hub.version != 0
                   ? QString::asprintf("Detect Zel Hub : Success\nfwVer:%04x", hub.version)
                   : QString("Detect Zel Hub : Success\n-need load driver");
    }
    if (nstfHubInfo_UpdateFW->toPlainText() != text) { // what is being read or selected stays
        nstfHubInfo_UpdateFW->setPlainText(text);
    }
    nstfHubInfo_UpdateFW->setTone(hub.found ? Tone::Blue : Tone::Red);
}

} // namespace vornadel
