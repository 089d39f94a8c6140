#pragma once

#include "editor/DropDownCells.h"
#include "editor/PropertyModel.h"
#include "props/PropItem.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QTableView;

namespace vornadel
{

struct FwImage;

/// The views of the flash page that the controller fills. They are the window's.
struct PropertyViews {
    QTableView* table = nullptr;
    QComboBox* icTypes = nullptr; ///< its text is the definition file, relative to the tool
                                  ///< directory
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

/// How the controller speaks.
struct PropertyVoices {
    std::function<void(const QString&)> log;   ///< one line for the console
    std::function<void(const QString&)> alert; ///< a modal alert; returns when it has closed
};

/// A value cell: what its open list offers, the text at rest and the position that is chosen, -1
/// for none.
struct ValueCell {
    QStringList entries;
    QString text;
    int chosen = -1;
};

/// Source of the property table and of what hangs on it: the description, the hex view, the
/// identity fields. Edits go straight into the image. Main thread; there is one.
class TableViewController final : public QObject
{
public:
    static constexpr const char* kPropertyColumn = "property";
    static constexpr const char* kValueColumn = "curValue";

    /// Makes itself the table's source. `image` is read and written. The views and the image must
    /// outlive the controller.
    TableViewController(const PropertyViews& views, FwImage& image, std::string toolDirectory,
                        PropertyVoices voices);
    ~TableViewController() override;

    /// Two empty lists; from here on TableControllerRef is this controller.
    TableViewController* init();

    /// Fills `allItemList` from the definition file that is selected and empties `propItemList`.
    /// Touches neither table nor image.
    void LoadIni();

    /// Sets `curValue` of every item with a key from the image. Does nothing while there is none.
    void RefreshCurValues();
    /// The same for the first items alone, as many as their number leaves in 8 bits: what loading a
    /// file does.
    void RefreshCurValues_8Bit();

    /// Shows the descriptor block with the bytes from `begin` up to `end` in red, scrolled to them.
    void ShowBinary(std::uint32_t begin, std::uint32_t end);

    /// Fills the identity fields from the image.
    void UpdateTxt_FwFlash();

    /// Shows the rows of `propItemList` as they are now. Other items than before: no row is
    /// selected any more.
    void reloadTable();

    int numberOfRowsInTableView();
    /// The text of a cell. `column` is kPropertyColumn or kValueColumn.
    QString tableView_objectValueForTableColumn_row(const QString& column, int row) const;
    /// Applies an edit: `value` is the position that was chosen in the row's list. A locked
    /// property is not changed and an alert says what unlocks it. An address outside the image is
    /// neither read (it counts as 0) nor written.
    void tableView_setObjectValue_forTableColumn_row(int value, const QString& column, int row);
    /// Shows the description of the selected row.
    void tableViewSelectionDidChange();

    ValueCell valueCell(int row) const;

    QTableView* _tableView;
    PropItemList propItemList; ///< the table's rows: the items of the selected page
    PropItemList allItemList;  ///< all items of the definition file

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    const PropItem* itemAt(int row) const;
    std::uint8_t* byteAt(std::uint32_t offset) const;
    void refreshFirst(std::size_t count);
    void apply(PropItem& item, int value);
    void refuse(const PropItem& item);
    void recolourHex();

    PropertyViews m_views;
    FwImage& m_image;
    std::string m_toolDirectory;
    PropertyVoices m_voices;
    PropertyModel m_model;
    DropDownCells m_dropDowns;
    PropItemList m_shown; ///< what the last reload found
};

/// The one controller, for plain functions; null before there is one.
extern TableViewController* TableControllerRef;

} // namespace vornadel
