#pragma once

#include <QFileDialog>

#include <string>

namespace vornadel
{

/// Asks for a file to open, of any type, and opens in `folder` unless it is empty. The file's path;
/// empty when nothing is chosen.
std::string chooseFile(QWidget* window, const std::string& folder);

/// Lets a panel open in a folder. If that has gone, or the panel cannot show its name, in the
/// nearest one above it; an empty one changes nothing.
void startIn(QFileDialog& panel, std::string folder);

/// Asks for the file to save an image to and emits `fileSelected`. Adds the suffix to the name
/// before it checks whether the file exists. Deletes itself when it closes.
class SavePanel final : public QFileDialog
{
public:
    explicit SavePanel(QWidget* window);

    /// Proposes a file name, which typing replaces. Call it after startIn().
    void suggest(const QString& name);

protected:
    void accept() override;
};

} // namespace vornadel
