#include "app/ImageDrop.h"

#include "app/Controls.h"

#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

#include <filesystem>
#include <system_error>
#include <utility>

namespace vornadel
{

ImageDrop::ImageDrop(TitledBox& box, const QPushButton& button,
                     std::function<void(const std::string&)> open)
    : QObject(&box), m_box(box), m_button(button), m_open(std::move(open))
{
    box.setAcceptDrops(true);
    box.installEventFilter(this);
    for (QLineEdit* field : box.findChildren<QLineEdit*>()) {
        field->installEventFilter(this); // it would take the file's name as text
    }
}

bool ImageDrop::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        break;
    case QEvent::DragLeave:
        m_box.setDropHint(false);
        return false;
    default:
        return false;
    }
    auto& drop = static_cast<QDropEvent&>(*event);
    if (watched != &m_box) {
        drop.ignore(); // the toolkit then asks the box
        return drop.mimeData()->hasUrls();
    }
    const std::optional<std::string> file = droppedFile(*drop.mimeData());
    m_box.setDropHint(file && event->type() != QEvent::Drop);
    if (!file) {
        drop.ignore();
        return true;
    }
    drop.setDropAction(Qt::CopyAction); // a move would delete the file
    drop.accept();
    if (event->type() == QEvent::Drop) {
        const auto openLater = [this, path = *file] {
            if (m_button.isEnabled()) {
                m_open(path);
            }
        };
        QMetaObject::invokeMethod(this, openLater, Qt::QueuedConnection);
    }
    return true;
}

std::optional<std::string> ImageDrop::droppedFile(const QMimeData& data) const
{
    const QList<QUrl> urls = data.urls();
    if (!m_button.isEnabled() || urls.size() != 1 || !urls.front().isLocalFile()) {
        return std::nullopt;
    }
    // Not toLocalFile(), which loses what is not UTF-8.
    const std::string path =
        QByteArray::fromPercentEncoding(urls.front().path(QUrl::FullyEncoded).toLatin1())
            .toStdString();
    std::error_code ignored;
    if (path.find('\0') != std::string::npos || std::filesystem::is_directory(path, ignored)) {
        return std::nullopt;
    }
    return path;
}

} // namespace vornadel
