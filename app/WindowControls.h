#pragma once

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

namespace vornadel
{

class ProgressSlider;
class TextView;
class TitledBox;

/// The window's controls, one pointer each; MyLayoutUI() creates them, their parents own them.
/// Every widget's objectName is the name of its member.
struct WindowControls {
    TitledBox* boxHelp = nullptr;
    TitledBox* boxScalar = nullptr;
    TitledBox* boxUpdate = nullptr;
    TitledBox* boxEasyUpdate = nullptr;
    TitledBox* boxFwFlash = nullptr;
    TitledBox* boxDetail = nullptr;

    QPushButton* nsbtnLoadDriver_HelpBox = nullptr;
    QPushButton* nsbtnUnloadDriver_HelpBox = nullptr;
    QPushButton* btnGetLog_HelpBox = nullptr;

    QLineEdit* nstextfd_Scalar = nullptr;
    QPushButton* nsbtnSelect_Scalar = nullptr;
    QPushButton* nsbtnUpdate_Scalar = nullptr;

    TextView* nstfHubInfo_UpdateFW = nullptr;
    TextView* nstfUpdateInfo_UpdateFW = nullptr;
    ProgressSlider* slider = nullptr;

    QLineEdit* txtVID_EasyUpdate = nullptr;
    QLineEdit* txtSSPID_EasyUpdate = nullptr;
    QLineEdit* txtHSPID_EasyUpdate = nullptr;
    QLineEdit* txtVer_EasyUpdate = nullptr;
    QLineEdit* txtManu_EasyUpdate = nullptr;
    QLineEdit* txtPro_EasyUpdate = nullptr;
    QLineEdit* txtSN_EasyUpdate = nullptr;
    QLineEdit* txtFw_EasyUpdate = nullptr;
    QPushButton* btnSelect_EasyUpdate = nullptr;
    QPushButton* btnUpdate_EasyUpdate = nullptr;

    QLineEdit* txtVID_FwFlash = nullptr;
    QLineEdit* txtSSPID_FwFlash = nullptr;
    QLineEdit* txtHSPID_FwFlash = nullptr;
    QLineEdit* txtVer_FwFlash = nullptr;
    QLineEdit* txtManu_FwFlash = nullptr;
    QLineEdit* txtPro_FwFlash = nullptr;
    QLineEdit* txtSN_FwFlash = nullptr;
    QLineEdit* txtContainerID_FwFlash = nullptr;
    QPushButton* btnRead_FwFlash = nullptr;
    QPushButton* btnLoad_FwFlash = nullptr;
    QPushButton* btnErase_FwFlash = nullptr;
    QPushButton* btnSave_FwFlash = nullptr;
    QLabel* lblUnsaved_FwFlash = nullptr;

    QLineEdit* txtFind_Detail = nullptr;
    QComboBox* cbPages = nullptr;
    QComboBox* cbICType = nullptr;
    QTableView* tbProperties_Detail = nullptr;
    TextView* txtViewDesc_Detail = nullptr;
    TextView* txtViewBin_Detail = nullptr;
};

} // namespace vornadel
