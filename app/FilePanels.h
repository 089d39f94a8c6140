#pragma once

#include <QFileDialog>

#include <string>

namespace vornadel
{

/// Asks for a file to open, of any type. Its path; empty when nothing is chosen.
std::string chooseFile(QWidget* window);

/// Asks for the file to save an image to and emits `fileSelected`. Adds the suffix to the name
/// before it checks whether the file exists. Deletes itself when it closes.
class SavePanel final : public QFileDialog
{
public:
    explicit SavePanel(QWidget* window);

protected:
    void accept() override;
};

} // namespace vornadel
