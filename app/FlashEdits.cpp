#include "app/FlashEdits.h"

#include "app/AppDelegate.h"
#include "app/Controls.h"
#include "editor/ToolTip.h"
#include "firmware/ImageDiff.h"
#include "props/PropertyEdit.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QShortcut>

#include <algorithm>

namespace vornadel
{

namespace
{

constexpr qsizetype kMostNames = 12; // in a tool tip

/// The fields of an image by their names in the window. All other names are not shown.
constexpr struct {
    const char* field;
    const char* label;
} kFieldLabels[] = {
    {"version", "ver"},
    {"vid", "VID"},
    {"sspid", "SSPID"},
    {"hspid", "HSPID"},
    {"manufacturer", "Manufacturer"},
    {"product", "Product"},
    {"serial", "Serial Number"},
    {"container-id", "Container ID"},
};

} // namespace

EditHistory& FlashEdits::history() const { return m_tool.tbViewController->history(); }

void FlashEdits::connectHistory()
{
    history().restored = [this](const EditHistory::Change& change) { showRestored(change); };
    history().changed = [this] { showMark(); };
    struct Key {
        const char* keys;
        void (EditHistory::*action)();
    };
    for (const Key& each :
         {Key{"Ctrl+Z", &EditHistory::undo}, Key{"Ctrl+Shift+Z", &EditHistory::redo},
          Key{"Ctrl+Y", &EditHistory::redo}}) {
        // The shortcut is off while the box is hidden, as in scalar mode.
        auto* const key = new QShortcut(QKeySequence(each.keys), m_tool.boxFwFlash);
        connect(key, &QShortcut::activated, this,
                [this, action = each.action] { (history().*action)(); });
    }
    for (QLineEdit* field : {m_tool.txtVID_FwFlash, m_tool.txtSSPID_FwFlash,
                             m_tool.txtHSPID_FwFlash, m_tool.txtManu_FwFlash, m_tool.txtPro_FwFlash,
                             m_tool.txtSN_FwFlash, m_tool.txtContainerID_FwFlash}) {
        field->installEventFilter(this);
    }
    showMark();
}

bool FlashEdits::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if (key.matches(QKeySequence::Undo)) {
            history().undo();
            return true;
        }
        if (key.matches(QKeySequence::Redo)) {
            history().redo();
            return true;
        }
    } else if (event->type() == QEvent::ContextMenu) {
        showMenu(static_cast<QLineEdit&>(*watched),
                 static_cast<const QContextMenuEvent&>(*event).globalPos());
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void FlashEdits::showMenu(QLineEdit& field, const QPoint& position)
{
    QMenu* const menu = field.createStandardContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    struct Entry {
        QString text;
        bool possible;
        void (EditHistory::*action)();
    };
    const Entry entries[] = {{QLineEdit::tr("&Undo"), history().canUndo(), &EditHistory::undo},
                             {QLineEdit::tr("&Redo"), history().canRedo(), &EditHistory::redo}};
    for (QAction* const item : menu->actions()) {
        for (const Entry& each : entries) {
            if (item->text().startsWith(each.text)) { // the keys follow
                item->disconnect();
                item->setEnabled(each.possible);
                connect(item, &QAction::triggered, this,
                        [this, action = each.action] { (history().*action)(); });
            }
        }
    }
    menu->popup(position);
}

void FlashEdits::showRestored(const EditHistory::Change& change)
{
    TableViewController& table = *m_tool.tbViewController;
    if (!change.otherImage) {
        if (change.item != nullptr) {
            m_tool.showProperty(*change.item);
        }
        table.showRestored(change);
        return;
    }
    table.LoadIni();
    if (change.after->loaded) {
        table.RefreshCurValues();
    } else {
        table.allItemList.clear();
        m_tool.txtViewBin_Detail->setPlainText("Binary Data\n");
    }
    m_tool.PageNameCombBox_SelectedChanged();
}

QStringList FlashEdits::unsavedEdits() const
{
    QStringList names;
    const ImageState* const saved = history().lastSaved();
    const ImageState* const now = history().current();
    if (saved == nullptr || now == nullptr) {
        return names;
    }
    FwImage before;
    FwImage after;
    FwImage_Restore(before, *saved);
    FwImage_Restore(after, *now);
    for (const FieldDifference& each : FwImage_FieldDifferences(before, after)) {
        for (const auto& [field, label] : kFieldLabels) {
            if (each.name == field) {
                names.append(label);
            }
        }
    }
    for (const auto& item : m_tool.tbViewController->allItemList) {
        if (differs(*item, saved->fromBlock(), now->fromBlock())) {
            names.append(QString::fromStdString(item->propName));
        }
    }
    return names;
}

void FlashEdits::showMark()
{
    QLabel& mark = *m_tool.lblUnsaved_FwFlash;
    mark.setVisible(history().hasUnsavedEdits());
    if (!history().hasUnsavedEdits()) {
        return;
    }
    const QStringList names = unsavedEdits();
    // Other bytes may differ too, such as the change flags.
    const qsizetype count = std::max<qsizetype>(names.size(), 1);
    const QString title =
        QString::number(count) + (count == 1 ? " unsaved edit" : " unsaved edits");
    QStringList lines = QStringList(title) + names.first(std::min(names.size(), kMostNames));
    if (names.size() > kMostNames) {
        lines.append("...");
    }
    mark.setAccessibleName(title);
    mark.setToolTip(plainToolTip(lines.join('\n')));
}

} // namespace vornadel
