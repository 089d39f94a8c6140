#include "app/FilePanels.h"

#include "app/FileNames.h"
#include "app/GeneralFunction.h"
#include "app/RawNameMenu.h"

#include <QApplication>
#include <QFile>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QGridLayout>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

#include <filesystem>
#include <system_error>

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

/// Call it before a panel closes. While its list of completions is open, the toolkit ignores that
/// the window becomes active again, and the keys would then reach nothing.
void closeCompletions()
{
    if (QWidget* list = QApplication::activePopupWidget()) {
        list->close();
    }
}

class OpenPanel final : public QFileDialog
{
public:
    using QFileDialog::QFileDialog;

protected:
    void accept() override
    {
        closeCompletions();
        QFileDialog::accept();
    }
};

/// Adds a button to the panel for the files that it cannot show; they are chosen into `chosen`. A
/// native panel stays as it is.
void offerRawNames(QFileDialog& panel, std::string& chosen)
{
    auto* const grid = qobject_cast<QGridLayout*>(panel.layout());
    if (grid == nullptr) {
        return;
    }
    auto* const button = new QPushButton("Other names", &panel);
    button->setObjectName("rawNames");
    button->setToolTip("Files whose names are not UTF-8");
    auto* const menu = new QMenu(button);
    button->setMenu(menu);
    grid->addWidget(button, grid->rowCount(), grid->columnCount() - 1);
    const auto list = [&panel, &chosen, button, menu](const QString& folder) {
        fillRawNameMenu(*menu, QFile::encodeName(folder).toStdString(),
                        [&panel, &chosen](const std::string& path) {
                            chosen = path;
                            static_cast<QDialog&>(panel).done(QDialog::Accepted);
                        });
        button->setHidden(menu->isEmpty());
    };
    QObject::connect(&panel, &QFileDialog::directoryEntered, button, list);
    list(panel.directory().path());
}

} // namespace

void startIn(QFileDialog& panel, std::string folder)
{
    std::error_code ignored;
    while (!folder.empty() && !(isUtf8(folder) && std::filesystem::is_directory(folder, ignored))) {
        folder.resize(folder.rfind('/'));
    }
    if (!folder.empty()) {
        panel.setDirectory(QFile::decodeName(folder.c_str()));
    }
}

std::string chooseFile(QWidget* window, const std::string& folder)
{
    OpenPanel panel(window);
    panel.setFileMode(QFileDialog::ExistingFile);
    panel.setIconProvider(plainIcons());
    startIn(panel, folder);
    std::string rawName;
    offerRawNames(panel, rawName);
    if (panel.exec() != QDialog::Accepted) {
        return {};
    }
    return rawName.empty() ? chosenPath(panel.selectedFiles().value(0)) : rawName;
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

void SavePanel::suggest(const QString& name)
{
    selectFile(name);
    findChild<QLineEdit*>("fileNameEdit")->selectAll();
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
    closeCompletions();
    QFileDialog::accept();
}

} // namespace vornadel
