#pragma once

#include "app/AppDelegate.h"

#include <QString>

namespace vornadel::layout
{

// The window's controls and their frames, as tables; MyLayoutUI() walks them.

/// In points; the origin is the lower left corner of the enclosing view.
struct Frame {
    double x, y, width, height;
};

using W = WindowControls;
using Box = TitledBox* WindowControls::*;
using Field = QLineEdit* WindowControls::*;
using Button = QPushButton* WindowControls::*;
using Text = TextView* WindowControls::*;
using Combo = QComboBox* WindowControls::*;
using Action = void (*)(AppDelegate&);

// clang-format off: one control, one row
#define MEMBER(name) &W::name, #name

enum class Shown { Always, ScalarOnly, NormalOnly };

struct BoxRow {
    Box member;
    const char* name;
    const char* title;
    Frame frame;
    Shown shown;
};

constexpr BoxRow kBoxes[] = {
    {MEMBER(boxHelp), "Help Box", {0, 15, 350, 160}, Shown::Always},
    {MEMBER(boxScalar), "Scalar Update", {0, 185, 350, 90}, Shown::ScalarOnly},
    {MEMBER(boxUpdate), "Update Firmware Box", {0, 290, 350, 365}, Shown::Always},
    {MEMBER(boxEasyUpdate),
     "Easy Updae Firmware Form *.bin file",
     {360, 15, 350, 270},
     Shown::NormalOnly},
    {MEMBER(boxFwFlash),
     "FirmWare From Flash & Detail Config ->",
     {360, 360, 350, 270},
     Shown::NormalOnly},
    {MEMBER(boxDetail),
     "FirmWare From Flash & Detail Config ->",
     {720, 15, 450, 637},
     Shown::NormalOnly},
};

struct LabelRow {
    Box box;
    const char* text;
    Frame frame;
};

constexpr LabelRow kLabels[] = {
    {&W::boxHelp,
     "Step1: Click \"LoadUpdateDriver\" to Load Driver\n"
     "Step2: repluginhub device,let new Driver work.\n"
     "Step3: Click \"Update\" to update fw\n"
     "Step4: Click \"UnloadUpdateDriver\" to recover",
     {0, 25, 350, 85}},
    {&W::boxUpdate, "Detect Hub Info", {0, 315, 110, 20}},
    {&W::boxUpdate, "Update FW Info", {0, 225, 110, 20}},
    {&W::boxEasyUpdate, "VID", {0, 220, 30, 20}},
    {&W::boxEasyUpdate, "SSPID", {100, 220, 50, 20}},
    {&W::boxEasyUpdate, "HSPID", {200, 220, 50, 20}},
    {&W::boxEasyUpdate, "ver", {250, 190, 30, 20}},
    {&W::boxEasyUpdate, "Manufacturer", {0, 160, 100, 20}},
    {&W::boxEasyUpdate, "Product", {0, 130, 100, 20}},
    {&W::boxEasyUpdate, "Serial Number", {0, 100, 100, 20}},
    {&W::boxFwFlash, "VID", {0, 220, 30, 20}},
    {&W::boxFwFlash, "SSPID", {100, 220, 50, 20}},
    {&W::boxFwFlash, "HSPID", {200, 220, 50, 20}},
    {&W::boxFwFlash, "ver", {250, 200, 30, 20}},
    {&W::boxFwFlash, "Manufacturer", {0, 175, 100, 20}},
    {&W::boxFwFlash, "Product", {0, 150, 100, 20}},
    {&W::boxFwFlash, "Serial Number", {0, 125, 100, 20}},
    {&W::boxFwFlash, "Container ID", {0, 100, 100, 20}},
    {&W::boxDetail, "PageName", {0, 550, 80, 20}},
    {&W::boxDetail, "ICType", {230, 590, 60, 20}},
    {&W::boxDetail, "Description", {0, 340, 110, 20}},
    {&W::boxDetail, "Binary Data", {0, 175, 110, 20}},
};

struct FieldRow {
    Box box;
    Field member;
    const char* name;
    const char* accessibleName;
    bool editable;
    Frame frame;
};

constexpr FieldRow kFields[] = {
    {&W::boxScalar, MEMBER(nstextfd_Scalar), "Firmware file", false, {0, 35, 300, 20}},
    {&W::boxEasyUpdate, MEMBER(txtVID_EasyUpdate), "VID", false, {29, 220, 50, 20}},
    {&W::boxEasyUpdate, MEMBER(txtSSPID_EasyUpdate), "SSPID", false, {143, 220, 50, 20}},
    {&W::boxEasyUpdate, MEMBER(txtHSPID_EasyUpdate), "HSPID", false, {243, 220, 50, 20}},
    {&W::boxEasyUpdate, MEMBER(txtVer_EasyUpdate), "ver", false, {273, 190, 50, 20}},
    {&W::boxEasyUpdate, MEMBER(txtManu_EasyUpdate), "Manufacturer", false, {103, 160, 200, 20}},
    {&W::boxEasyUpdate, MEMBER(txtPro_EasyUpdate), "Product", false, {103, 130, 200, 20}},
    {&W::boxEasyUpdate, MEMBER(txtSN_EasyUpdate), "Serial Number", false, {103, 100, 200, 20}},
    {&W::boxEasyUpdate, MEMBER(txtFw_EasyUpdate), "Firmware file", false, {0, 30, 300, 20}},
    {&W::boxFwFlash, MEMBER(txtVID_FwFlash), "VID", true, {29, 220, 44, 20}},
    {&W::boxFwFlash, MEMBER(txtSSPID_FwFlash), "SSPID", true, {143, 220, 44, 20}},
    {&W::boxFwFlash, MEMBER(txtHSPID_FwFlash), "HSPID", true, {243, 220, 44, 20}},
    {&W::boxFwFlash, MEMBER(txtVer_FwFlash), "ver", false, {273, 197, 44, 20}},
    {&W::boxFwFlash, MEMBER(txtManu_FwFlash), "Manufacturer", true, {103, 175, 200, 20}},
    {&W::boxFwFlash, MEMBER(txtPro_FwFlash), "Product", true, {103, 150, 200, 20}},
    {&W::boxFwFlash, MEMBER(txtSN_FwFlash), "Serial Number", true, {103, 125, 200, 20}},
    {&W::boxFwFlash, MEMBER(txtContainerID_FwFlash), "Container ID", true, {0, 80, 303, 20}},
    {&W::boxDetail, MEMBER(txtFind_Detail), "Find a property", true, {0, 588, 220, 25}},
};

template <void (AppDelegate::*action)()>
void perform(AppDelegate& delegate)
{
    (delegate.*action)();
}

struct ButtonRow {
    Box box;
    Button member;
    const char* name;
    const char* label;
    Frame frame;
    Action action;
    const char* description; ///< the tool tip, and for screen readers
    const char* shortcut;    ///< presses the button; may be empty
};

constexpr ButtonRow kButtons[] = {
    {&W::boxHelp,
     MEMBER(nsbtnLoadDriver_HelpBox),
     "LoadUpdateDriver",
     {0, 115, 130, 20},
     perform<&AppDelegate::LoadUpdateDriver>,
     "Asks for an administrator's password and gives access to the hub",
     ""},
    {&W::boxHelp,
     MEMBER(nsbtnUnloadDriver_HelpBox),
     "UnloadUpdateDriver",
     {175, 115, 130, 20},
     perform<&AppDelegate::UnloadUpdateDriver>,
     "Asks for an administrator's password and withdraws access to the hub",
     ""},
    {&W::boxHelp,
     MEMBER(btnGetLog_HelpBox),
     "Get Log",
     {230, 0, 70, 20},
     perform<&AppDelegate::GetLog>,
     "Copies the log file to the desktop",
     ""},
    {&W::boxScalar,
     MEMBER(nsbtnSelect_Scalar),
     "..",
     {305, 35, 30, 20},
     perform<&AppDelegate::chooseScalarUpdateFw>,
     "Choose a firmware file; hold, or press Down, for the ones used last",
     ""},
    {&W::boxScalar,
     MEMBER(nsbtnUpdate_Scalar),
     "ScalarUpdate",
     {230, 5, 100, 20},
     perform<&AppDelegate::MP_UpdateScalar>,
     "Writes the firmware file to the hub and, after a success, ends the program",
     ""},
    {&W::boxEasyUpdate,
     MEMBER(btnSelect_EasyUpdate),
     "...",
     {303, 30, 30, 20},
     perform<&AppDelegate::chooseFw_EasyUpdate>,
     "Choose a firmware file; hold, or press Down, for the ones used last",
     ""},
    {&W::boxEasyUpdate,
     MEMBER(btnUpdate_EasyUpdate),
     "Update",
     {250, 0, 70, 20},
     perform<&AppDelegate::updateFw_EasyUpdate>,
     "Writes the chosen firmware file to the hub",
     ""},
    {&W::boxFwFlash,
     MEMBER(btnRead_FwFlash),
     "Read From Flash",
     {10, 50, 130, 20},
     perform<&AppDelegate::read_FwFlash>,
     "Reads the hub's whole flash into this box",
     "Ctrl+R"},
    {&W::boxFwFlash,
     MEMBER(btnLoad_FwFlash),
     "Load From *.bin",
     {10, 25, 130, 20},
     perform<&AppDelegate::load_FwFlash>,
     "Loads an image from a file into this box; hold, or press Down, for the ones used last",
     "Ctrl+O"},
    {&W::boxFwFlash,
     MEMBER(btnErase_FwFlash),
     "Erase Flash",
     {10, 0, 130, 20},
     perform<&AppDelegate::erase_FwFlash>,
     "Erases the hub's whole flash at once, without asking",
     ""},
    {&W::boxFwFlash,
     MEMBER(btnSave_FwFlash),
     "Save to *.bin",
     {200, 37.5, 120, 20},
     perform<&AppDelegate::save_FwFlash>,
     "Saves the image of this box, with your changes, to a file",
     "Ctrl+S"},
};

/// Shortcuts that press no button. The tool tip of the help box lists them.
struct ShortcutRow {
    Box box; ///< where they work
    const char* keys;
    const char* what;
};

constexpr ShortcutRow kMoreShortcuts[] = {
    {&W::boxFwFlash, "Ctrl+Z", "undo an edit"},
    {&W::boxFwFlash, "Ctrl+Shift+Z", "repeat it"},
    {&W::boxDetail, "Ctrl+F", "find a property"},
    {&W::boxDetail, "Ctrl+C", "copy the selected rows"},
    {&W::boxHelp, "F1", "the manual"},
};

struct TextRow {
    Box box;
    Text member;
    const char* name;
    const char* accessibleName;
    int fontSize;
    Frame frame;
};

constexpr TextRow kTexts[] = {
    {&W::boxUpdate, MEMBER(nstfHubInfo_UpdateFW), "Detect Hub Info", 12, {0, 255, 335, 60}},
    {&W::boxUpdate, MEMBER(nstfUpdateInfo_UpdateFW), "Update FW Info", 12, {0, 35, 335, 190}},
    {&W::boxDetail, MEMBER(txtViewDesc_Detail), "Description", 14, {0, 200, 450, 140}},
    {&W::boxDetail, MEMBER(txtViewBin_Detail), "Binary Data", 14, {0, 0, 450, 175}},
};

struct ComboRow {
    Combo member;
    const char* name;
    const char* label;       ///< the one beside it
    const char* description; ///< for screen readers
    Frame frame;
};

constexpr ComboRow kCombos[] = {
    {MEMBER(cbPages), "PageName", "Which properties the table lists", {70, 547, 150, 25}},
    {MEMBER(cbICType),
     "ICType",
     "The file that describes the controller's properties",
     {280, 588, 150, 25}},
};

/// The order of the Tab key: the update first, then column by column, top to bottom. Read-only
/// fields and the progress bar are left out.
constexpr const char* kTabOrder[] = {
    "nstfUpdateInfo_UpdateFW",
    "nsbtnSelect_Scalar",
    "nsbtnUpdate_Scalar",
    "nsbtnLoadDriver_HelpBox",
    "nsbtnUnloadDriver_HelpBox",
    "btnGetLog_HelpBox",
    "txtVID_FwFlash",
    "txtSSPID_FwFlash",
    "txtHSPID_FwFlash",
    "txtManu_FwFlash",
    "txtPro_FwFlash",
    "txtSN_FwFlash",
    "txtContainerID_FwFlash",
    "btnRead_FwFlash",
    "btnLoad_FwFlash",
    "btnErase_FwFlash",
    "btnSave_FwFlash",
    "btnSelect_EasyUpdate",
    "btnUpdate_EasyUpdate",
    "txtFind_Detail",
    "cbICType",
    "cbPages",
    "tbProperties_Detail",
    "txtViewDesc_Detail",
    "txtViewBin_Detail",
};

#undef MEMBER
// clang-format on

} // namespace vornadel::layout
