#pragma once

#include "editor/DropDownCells.h"
#include "editor/EditHistory.h"
#include "editor/HexView.h"
#include "editor/PropertyModel.h"
#include "editor/RowNotes.h"
#include "props/PropItem.h"

#include <QBrush>
#include <QObject>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QTableView;

namespace vornadel
{

struct FwImage;

/// The views of the flash page that the controller fills. The window owns them.
struct PropertyViews {
    QTableView* table = nullptr;
    /// Its data is the property file's path from the tool directory, as bytes.
    QComboBox* icTypes = nullptr;
    QPlainTextEdit* description = nullptr;
    QPlainTextEdit* hex = nullptr;
    QLineEdit* vid = nullptr;
    QLineEdit* sspid = nullptr;
    QLineEdit* hspid = nullptr;
    QLineEdit* version = nullptr;
    QLineEdit* manufacturer = nullptr;
    QLineEdit* product = nullptr;
    QLineEdit* serial = nullptr;
    QLineEdit* containerId = nullptr;
};

/// Where the controller sends its messages.
struct PropertyVoices {
    std::function<void(const QString&)> log;   ///< one line for the console
    std::function<void(const QString&)> alert; ///< a modal alert; returns when it has closed
};

/// A value cell: the entries of its list, its text when closed, and the chosen position (-1: none).
struct ValueCell {
    QStringList entries;
    QString text;
    int chosen = -1;
};

/// Data source of the property table and of the views that depend on it: the description, the hex
/// view, the identity fields. Edits change the image at once. Main thread; one instance.
class TableViewController final : public QObject
{
public:
    static constexpr const char* kPropertyColumn = "property";
    static constexpr const char* kValueColumn = "curValue";

    /// Becomes the table's data source. `image` is read and written. The views and the image must
    /// outlive the controller.
    TableViewController(const PropertyViews& views, FwImage& image, std::string toolDirectory,
                        PropertyVoices voices);
    ~TableViewController() override;

    /// Empties both lists and sets TableControllerRef to this controller.
    TableViewController* init();

    /// Fills `allItemList` from the selected property file and empties `propItemList`. Touches
    /// neither table nor image.
    void LoadIni();

    /// Sets `curValue` of every item with a non-zero key from the image, if there is one.
    void RefreshCurValues();
    /// The same for the first items only: as many as the low 8 bits of their number say. Used when
    /// a file is loaded.
    void RefreshCurValues_8Bit();

    /// Shows the descriptor block with the bytes from `begin` up to `end` in red, scrolled to them.
    void ShowBinary(std::uint32_t begin, std::uint32_t end);

    /// Fills the identity fields from the image.
    void UpdateTxt_FwFlash();

    /// Shows the current rows of `propItemList`. If they are other items than before, the selection
    /// is cleared.
    void reloadTable();

    int numberOfRowsInTableView();
    /// The text of a cell. `column` is kPropertyColumn or kValueColumn.
    QString tableView_objectValueForTableColumn_row(const QString& column, int row) const;
    /// Applies an edit: `value` is the position chosen in the row's list. A locked property is not
    /// changed; an alert says what unlocks it. An address outside the image is not written, and
    /// reads as 0.
    void tableView_setObjectValue_forTableColumn_row(int value, const QString& column, int row);
    /// Shows the description of the selected row, or of the first of them.
    void tableViewSelectionDidChange();

    ValueCell valueCell(int row) const;
    /// The tool tip of a cell, whose lines are its text and the notes on its row.
    QString toolTip(const QString& text, int row) const;
    RowNotes notes(int row) const;
    QBrush lockedText() const; ///< for the text of a locked row

    /// Shows an image after an undo or a redo: the values and the bytes that have changed.
    void showRestored(const EditHistory::Change& change);

    EditHistory& history() { return m_history; }
    HexView& hexView() { return m_hex; }

    QTableView* _tableView;
    PropItemList propItemList; ///< the table's rows: the items of the selected page
    PropItemList allItemList;  ///< all items of the property file

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    const PropItem* itemAt(int row) const;
    void refreshFirst(std::size_t count);
    void apply(const std::shared_ptr<PropItem>& item, int value);
    void refuse(const PropItem& item);
    void showFileProblem(const std::string& path, const std::string& problem);
    void underlineByteOf(int row);

    PropertyViews m_views;
    FwImage& m_image;
    std::string m_toolDirectory;
    PropertyVoices m_voices;
    PropertyModel m_model;
    DropDownCells m_dropDowns;
    EditHistory m_history;
    HexView m_hex;
    PropItemList m_shown; ///< what the last reload found
};

/// The controller, for plain functions; null until init().
extern TableViewController* TableControllerRef;

} // namespace vornadel
