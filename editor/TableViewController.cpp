#include "editor/TableViewController.h"

#include "editor/CopyRows.h"
#include "editor/HexText.h"
#include "editor/ImageText.h"
#include "editor/Tone.h"
#include "editor/ToolTip.h"
#include "firmware/FwImage.h"
#include "props/PropertyEdit.h"
#include "props/PropertyFile.h"

#include <QComboBox>
#include <QEvent>
#include <QFile>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableView>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <span>
#include <utility>

namespace vornadel
{

TableViewController* TableControllerRef = nullptr;

namespace
{

constexpr int kPropertyWidth = 266;
constexpr int kValueWidth = 170;

QString fromText(const std::string& text) { return QString::fromStdString(text); }

/// The decimal number at the start of a text; 0 if there is none.
int leadingNumber(const QString& text)
{
    // strtol stops at the first character that does not fit and clamps what is too large.
    const long number = std::strtol(text.toLatin1().constData(), nullptr, 10);
    return static_cast<int>(
        std::clamp<long>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

} // namespace

TableViewController::TableViewController(const PropertyViews& views, FwImage& image,
                                         std::string toolDirectory, PropertyVoices voices)
    : _tableView(views.table), m_views(views), m_image(image),
      m_toolDirectory(std::move(toolDirectory)), m_voices(std::move(voices)), m_model(*this),
      m_dropDowns(*views.table, PropertyModel::CurValue), m_history(image), m_hex(*views.hex)
{
    QTableView& table = *_tableView;
    table.setModel(&m_model);
    m_dropDowns.openForAssistiveTechnology();
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setSelectionMode(QAbstractItemView::ExtendedSelection);
    copyRowsByKey(table);
    table.setColumnWidth(PropertyModel::Property, kPropertyWidth);
    table.setColumnWidth(PropertyModel::CurValue, kValueWidth);
    table.viewport()->installEventFilter(this);
    table.setMouseTracking(true);
    connect(&table, &QTableView::entered, this,
            [this](const QModelIndex& index) { underlineByteOf(index.row()); });
    connect(&table, &QTableView::viewportEntered, this, [this] { m_hex.underline({}); });
    connect(table.selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { tableViewSelectionDidChange(); });
    init();
}

TableViewController::~TableViewController()
{
    if (TableControllerRef == this) {
        TableControllerRef = nullptr;
    }
}

TableViewController* TableViewController::init()
{
    propItemList.clear();
    allItemList.clear();
    TableControllerRef = this;
    return this;
}

void TableViewController::LoadIni()
{
    propItemList.clear();
    allItemList.clear();
    if (m_views.icTypes->currentIndex() < 0) {
        return;
    }
    const std::string path =
        m_toolDirectory + "/" + m_views.icTypes->currentData().toByteArray().toStdString();
    m_voices.log("ini is: " + QFile::decodeName(path.c_str()));
    std::string problem;
    allItemList = readPropertyFile(path, problem);
    showFileProblem(path, problem);
}

void TableViewController::showFileProblem(const std::string& path, const std::string& problem)
{
    QComboBox& types = *m_views.icTypes;
    if (problem.empty()) {
        types.setToolTip(plainToolTip(types.currentText()));
        return;
    }
    m_voices.log(fromText(problem));
    const std::string reason = problem.substr(std::min(path.size() + 1, problem.size()));
    types.setToolTip(plainToolTip(QFile::decodeName(path.c_str()) + '\n' + fromText(reason)));
}

void TableViewController::RefreshCurValues() { refreshFirst(allItemList.size()); }

void TableViewController::RefreshCurValues_8Bit() { refreshFirst(allItemList.size() % 256); }

void TableViewController::refreshFirst(std::size_t count)
{
    if (m_image.loaded) {
        refreshValues(std::span(allItemList).first(count), FwImage_Block(m_image));
    }
}

void TableViewController::ShowBinary(std::uint32_t begin, std::uint32_t end)
{
    m_voices.log(QString::asprintf("offsetBegin :%d   ;   noffsetEnd :%d\n",
                                   static_cast<int>(begin), static_cast<int>(end)));
    if (!m_image.loaded) {
        return;
    }
    m_hex.show(hexText(m_image, begin, end));
}

void TableViewController::UpdateTxt_FwFlash()
{
    if (!m_image.loaded) {
        return;
    }
    m_views.vid->setText(fromText(FwImage_IdText(m_image.vid)));
    m_views.sspid->setText(fromText(FwImage_IdText(m_image.sspid)));
    m_views.hspid->setText(fromText(FwImage_IdText(m_image.hspid)));
    m_views.version->setText(fromText(FwImage_IdText(m_image.version)));
    showImageText(*m_views.manufacturer, m_image.manufacturer.data());
    showImageText(*m_views.product, m_image.product.data());
    showImageText(*m_views.serial, m_image.serial.data());
    m_views.containerId->setText(fromText(FwImage_ContainerIdText(m_image.containerId)));
}

void TableViewController::reloadTable()
{
    const bool sameItems = m_shown == propItemList;
    m_shown = propItemList;
    if (!sameItems) {
        m_hex.underline({});
    }
    m_model.reload(sameItems);
}

int TableViewController::numberOfRowsInTableView()
{
    m_voices.log("Enter numberOfRowsInTableView");
    return static_cast<int>(propItemList.size());
}

const PropItem* TableViewController::itemAt(int row) const
{
    return row >= 0 && static_cast<std::size_t>(row) < propItemList.size()
               ? propItemList[static_cast<std::size_t>(row)].get()
               : nullptr;
}

ValueCell TableViewController::valueCell(int row) const
{
    ValueCell cell;
    cell.text = kEmptyValue;
    const PropItem* item = itemAt(row);
    if (item == nullptr) {
        return cell;
    }
    cell.text = fromText(valueText(*item));
    for (std::size_t i = 0; i < item->dataList.size(); ++i) {
        cell.entries.append(fromText(optionText(*item, i)));
    }
    const int position = leadingNumber(cell.text);
    cell.chosen = position >= 0 && position < cell.entries.size() ? position : -1;
    return cell;
}

QString TableViewController::tableView_objectValueForTableColumn_row(const QString& column,
                                                                     int row) const
{
    const PropItem* item = itemAt(row);
    if (item != nullptr && column == kPropertyColumn) {
        return fromText(item->property);
    }
    return item != nullptr && column == kValueColumn ? valueCell(row).text : QString(kEmptyValue);
}

void TableViewController::tableView_setObjectValue_forTableColumn_row(int value,
                                                                      const QString& column,
                                                                      int row)
{
    if (!m_image.loaded || column != kValueColumn || itemAt(row) == nullptr) {
        return;
    }
    const std::shared_ptr<PropItem> item = propItemList[static_cast<std::size_t>(row)];
    const std::span<const std::uint8_t> block = FwImage_Block(m_image);
    m_voices.log(QString::asprintf("baseOnMask=%d;baseOnAddr=%d;baseOnValue=%d", item->baseOnMask,
                                   static_cast<int>(item->baseOnAddr),
                                   enablingValue(*item, block)));
    if (isLocked(*item, block)) {
        refuse(*item);
    } else {
        apply(item, value);
    }
}

void TableViewController::apply(const std::shared_ptr<PropItem>& item, int value)
{
    const std::string before = item->curValue;
    chooseOption(*item, value, FwImage_Block(m_image));
    m_history.edited(item, before);
    m_voices.log(QString::asprintf("value = %d", value));
    m_voices.log(
        QString::asprintf("baseOnAddr:%d\nbaseOnMask:%d\n", static_cast<int>(item->baseOnAddr),
                          item->baseOnMask) +
        "pageName:" + fromText(item->pageName) + "\nPropName:" + fromText(item->propName) +
        QString::asprintf("\naddr:%d\nmask:%d\n", static_cast<int>(item->addr), item->mask));
    reloadTable();
    ShowBinary(item->addr, item->addr + 1); // in 32 bits: behind the last address comes 0
}

void TableViewController::refuse(const PropItem& item)
{
    m_voices.alert(fromText(whyLocked(item, allItemList)));
    reloadTable();
}

void TableViewController::tableViewSelectionDidChange()
{
    const QModelIndexList rows = _tableView->selectionModel()->selectedRows();
    const auto first = std::min_element(rows.begin(), rows.end()); // in the order of the table
    const PropItem* item = first == rows.end() ? nullptr : itemAt(first->row());
    if (item == nullptr) {
        return;
    }
    m_voices.log(
        QString::asprintf("key:%d\nbaseOnAddr:%d\nbaseOnMask:%d\n", item->key,
                          static_cast<int>(item->baseOnAddr), item->baseOnMask) +
        "pageName:" + fromText(item->pageName) + "\ngroupName:" + fromText(item->groupName) +
        "\nPropName:" + fromText(item->propName) + "\nPropDesc:" + fromText(item->propDesc) +
        QString::asprintf("\naddr:%d\nmask:%d\n", static_cast<int>(item->addr), item->mask));
    QString text;
    if (item->key != 0) {
        text += QString::asprintf("(addr:0x%02X  mask:0x%02X)\n", item->addr & 0xFF, item->mask) +
                fromText(item->propDesc) + " : \n";
    }
    for (std::size_t i = 0; i < item->dataList.size(); ++i) {
        text += fromText(optionText(*item, i)) + "\n";
    }
    m_views.description->setPlainText(text);
}

RowNotes TableViewController::notes(int row) const
{
    const PropItem* item = itemAt(row);
    return item == nullptr ? RowNotes()
                           : rowNotes(*item, allItemList, m_image, m_history.original());
}

QString TableViewController::toolTip(const QString& text, int row) const
{
    QStringList lines{text};
    const PropItem* item = itemAt(row);
    const auto isElsewhere = [item](const auto& other) {
        return other->pageName != item->pageName;
    };
    if (item != nullptr && std::any_of(propItemList.begin(), propItemList.end(), isElsewhere)) {
        lines.append("Page: " + fromText(item->pageName)); // the rows were found on several pages
    }
    return plainToolTip((lines + notes(row).lines).join('\n'));
}

QBrush TableViewController::lockedText() const
{
    constexpr float kShare = 0.6F; // of the text's colour; readable on light and dark ground
    const QPalette& colors = _tableView->palette();
    return mixedColor(colors.color(QPalette::Base), colors.color(QPalette::Text), kShare);
}

void TableViewController::showRestored(const EditHistory::Change& change)
{
    const std::span<const std::uint8_t> before = change.before->fromBlock();
    const std::span<const std::uint8_t> after = change.after->fromBlock();
    refreshDifferentValues(allItemList, before, after);
    reloadTable();
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
    for (std::uint32_t at = 0; at < std::min(before.size(), after.size()); ++at) {
        if (before[at] != after[at]) {
            begin = end == 0 ? at : begin;
            end = at + 1;
        }
    }
    ShowBinary(begin, end);
    UpdateTxt_FwFlash();
}

void TableViewController::underlineByteOf(int row)
{
    const PropItem* item = itemAt(row);
    m_hex.underline(item == nullptr || item->addr > 0xFF
                        ? std::nullopt
                        : std::optional<int>(static_cast<int>(item->addr)));
}

bool TableViewController::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _tableView->viewport() && event->type() == QEvent::Leave) {
        m_hex.underline({});
    } else if (watched == _tableView->viewport() && event->type() == QEvent::Resize) {
        // A vertical scroll bar narrows the names, not the drop-downs.
        const int room = _tableView->viewport()->width() - kValueWidth;
        _tableView->setColumnWidth(PropertyModel::Property, std::min(kPropertyWidth, room));
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vornadel
