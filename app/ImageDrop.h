#pragma once

#include <QObject>

#include <functional>
#include <optional>
#include <string>

class QMimeData;
class QPushButton;

namespace vornadel
{

class TitledBox;

/// Lets a file be dropped on a box as if the panel of the box's button had returned it: exactly one
/// local file, while the button is enabled. The box's title shows that it would take the file.
/// Belongs to the box.
class ImageDrop final : public QObject
{
public:
    /// Create it after the box's fields. `open` is called with the file's path, after the drop has
    /// ended: it may open an alert, for which the file manager would have to wait.
    ImageDrop(TitledBox& box, const QPushButton& button,
              std::function<void(const std::string&)> open);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::optional<std::string> droppedFile(const QMimeData& data) const;

    TitledBox& m_box;
    const QPushButton& m_button;
    std::function<void(const std::string&)> m_open;
};

} // namespace vornadel
