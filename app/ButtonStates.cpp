// While a long operation runs, nobody may start a second one: the ten operation buttons are enabled
// and disabled together. The keyboard focus waits meanwhile.

#include "app/AppDelegate.h"
#include "app/FocusHolder.h"

#include <QPushButton>

namespace vornadel
{

void AppDelegate::SetButtonStatus(bool enabled)
{
    static constexpr QPushButton* WindowControls::*kSwitched[] = {
        &WindowControls::nsbtnSelect_Scalar,      &WindowControls::btnLoad_FwFlash,
        &WindowControls::btnSave_FwFlash,         &WindowControls::btnSelect_EasyUpdate,
        &WindowControls::nsbtnLoadDriver_HelpBox, &WindowControls::nsbtnUnloadDriver_HelpBox,
        &WindowControls::btnRead_FwFlash,         &WindowControls::btnErase_FwFlash,
        &WindowControls::btnUpdate_EasyUpdate,    &WindowControls::nsbtnUpdate_Scalar,
    };
    for (QPushButton* WindowControls::*button : kSwitched) {
        if (!enabled) {
            m_focusHolder->takeFrom(*(this->*button));
        }
        (this->*button)->setEnabled(enabled);
    }
    if (enabled) {
        m_focusHolder->giveBack();
    }
}

} // namespace vornadel
