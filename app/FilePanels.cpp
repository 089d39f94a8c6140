#include "app/FilePanels.h"

#include "app/FileNames.h"
#include "app/GeneralFunction.h"

#include <QFileIconProvider>
#include <QFileInfo>
#include <QLineEdit>

namespace vornadel
{

namespace
{

constexpr const char* kImageSuffix = "BIN";

/// Distinguishes files from folders, and nothing else. The toolkit's own provider reads from each
/// file, which never ends for some in /proc.
class PlainIcons final : public QFileIconProvider
{
public:
    using QFileIconProvider::icon;
    QIcon icon(const QFileInfo& info) const override { return icon(info.isDir() ? Folder : File); }
    QString type(const QFileInfo& info) const override { return info.isDir() ? "Folder" : "File"; }
};

/// Outlives every panel, because the panels' threads use it.
PlainIcons* plainIcons()
{
    static PlainIcons icons;
    return &icons;
}

} // namespace

std::string chooseFile(QWidget* window)
{
    QFileDialog panel(window);
    panel.setFileMode(QFileDialog::ExistingFile);
    panel.setIconProvider(plainIcons());
    return panel.exec() == QDialog::Accepted ? chosenPath(panel.selectedFiles().value(0))
                                             : std::string();
}

SavePanel::SavePanel(QWidget* window) : QFileDialog(window)
{
    // A native dialog would check whether the file exists before it adds the suffix.
    setOption(DontUseNativeDialog);
    setIconProvider(plainIcons());
    setWindowTitle("Choose the path to save the *.Bin file");
    setNameFilter("BIN (*.BIN *.bin)");
    setAcceptMode(AcceptSave);
    setLabelText(FileName, "save as");
    setDefaultSuffix(kImageSuffix);
    setAttribute(Qt::WA_DeleteOnClose);
}

void SavePanel::accept()
{
    auto* name = findChild<QLineEdit*>("fileNameEdit");
    if (name->text().contains('"')) {
        // The panel takes the text between two double quotes for the whole name.
        GeneralFunction::AlertString("A file name cannot contain a double quote.");
        return;
    }
    const QFileInfo chosen(selectedFiles().value(0));
    if (!chosen.isDir() && chosen.suffix().compare(kImageSuffix, Qt::CaseInsensitive) != 0) {
        // selectFile() does not change the name while it has the focus.
        name->setText(chosen.filePath() + "." + kImageSuffix);
    }
    QFileDialog::accept();
}

} // namespace vornadel
