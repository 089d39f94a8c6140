#pragma once

#include "editor/EditHistory.h"

#include <QObject>
#include <QStringList>

class QLineEdit;

namespace vornadel
{

class AppDelegate;

/// Undo and redo by key for the flash page, and the mark of unsaved edits beside "Save to *.bin".
/// Undo in one of the identity fields undoes the edits of the image, not those of the field. Main
/// thread.
class FlashEdits final : public QObject
{
public:
    explicit FlashEdits(AppDelegate& tool) : m_tool(tool) {}

    /// Connects to the history and to the controls. Call it once, after the layout.
    void connectHistory();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    EditHistory& history() const;
    void showRestored(const EditHistory::Change& change);
    void showMark();
    QStringList unsavedEdits() const;
    void showMenu(QLineEdit& field, const QPoint& position);

    AppDelegate& m_tool;
};

} // namespace vornadel
