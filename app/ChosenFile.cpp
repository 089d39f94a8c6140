#include "app/ChosenFile.h"

#include "app/FileNames.h"
#include "editor/ToolTip.h"

#include <QAction>
#include <QLineEdit>
#include <QStyle>

namespace vornadel
{

namespace
{

constexpr const char* kWarning = "Warning";

void showFile(QLineEdit& field, const std::string& path, const QString& warning)
{
    const QString name = shownName(path);
    field.setText(name);
    // The name may be longer than the field.
    field.setToolTip(plainToolTip(warning.isEmpty() ? name : name + "\n" + warning));
    const QString box = field.parentWidget()->accessibleName();
    field.setAccessibleDescription(warning.isEmpty() ? box : warning);
    delete field.findChild<QAction*>(kWarning);
    if (!warning.isEmpty()) {
        auto* const sign = new QAction(field.style()->standardIcon(QStyle::SP_MessageBoxWarning),
                                       kWarning, &field);
        sign->setObjectName(kWarning);
        sign->setToolTip(plainToolTip(warning));
        field.addAction(sign, QLineEdit::LeadingPosition);
    }
}

} // namespace

bool ChosenFile::load(FwImage& image, const std::string& path, QLineEdit& field)
{
    if (FwImage_LoadFile(image, path)) {
        loaded(path, field);
        return true;
    }
    const QString writes = QString("\"%1\" writes ").arg(m_button);
    showFile(field, path,
             image.loaded ? "This file could not be read. " + writes +
                                "the image chosen before: " + shownName(m_source)
                          : "No firmware was found in this file. " + writes + "nothing.");
    return false;
}

void ChosenFile::yieldsTo(const std::string& preferred, const std::string& path,
                          QLineEdit& field) const
{
    showFile(field, path,
             QString("\"%1\" writes the image that config.ini names, if it can be read: ")
                     .arg(m_button) +
                 shownName(preferred));
}

void ChosenFile::loaded(const std::string& path, QLineEdit& field)
{
    m_source = path;
    showFile(field, path, {});
}

} // namespace vornadel
