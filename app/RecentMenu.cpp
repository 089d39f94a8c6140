#include "app/RecentMenu.h"

#include "app/FileNames.h"
#include "app/RecentFiles.h"
#include "editor/ToolTip.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QStyleHints>
#include <QTimer>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace vornadel
{

namespace
{

constexpr int kWidestEntry = 500; ///< in pixels

/// Why an image cannot be opened; empty if it is there.
QString whyMissing(const std::string& path)
{
    std::error_code problem;
    const std::filesystem::file_status found = std::filesystem::status(path, problem);
    if (problem) {
        return QString::fromStdString(problem.message());
    }
    return std::filesystem::is_regular_file(found) ? QString() : QStringLiteral("Not a file");
}

} // namespace

RecentMenu::RecentMenu(QPushButton& button, RecentFiles& files,
                       std::function<void(const std::string&)> open)
    : QObject(&button), m_button(button), m_files(files), m_open(std::move(open))
{
    button.installEventFilter(this);
}

bool RecentMenu::eventFilter(QObject* watched, QEvent* event)
{
    if (!m_button.isEnabled()) {
        return QObject::eventFilter(watched, event);
    }
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
            m_held.start(QGuiApplication::styleHints()->mousePressAndHoldInterval(), this);
        }
        break;
    case QEvent::MouseButtonRelease:
        m_held.stop();
        break;
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down) {
            popUp();
            return true;
        }
        break;
    case QEvent::ContextMenu:
        popUp();
        return true;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void RecentMenu::timerEvent(QTimerEvent* /*event*/)
{
    m_held.stop();
    // If the thread was busy, the release may be waiting. It is handled before this timer.
    QTimer::singleShot(1, this, [this] {
        if (m_button.isDown()) {
            m_button.setDown(false); // so that the release is no click
            popUp();
        }
    });
}

void RecentMenu::popUp()
{
    auto* const menu = new QMenu(&m_button);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setAccessibleName("Images used last");
    menu->setToolTipsVisible(true);
    int number = 0;
    for (const std::string& path : m_files.images()) {
        const QString name = shownName(path);
        const QString missing = whyMissing(path);
        const QString text = missing.isEmpty() ? name : name + " (" + missing + ")";
        QAction* const entry = menu->addAction(
            QString("&%1  ").arg(++number) +
            menu->fontMetrics().elidedText(text, Qt::ElideMiddle, kWidestEntry).replace("&", "&&"));
        entry->setToolTip(plainToolTip(text));
        entry->setEnabled(missing.isEmpty());
        connect(entry, &QAction::triggered, this, [this, path] {
            if (m_button.isEnabled()) {
                m_open(path);
            }
        });
    }
    if (menu->isEmpty()) {
        menu->addAction("No images yet")->setEnabled(false);
    }
    menu->popup(m_button.mapToGlobal(QPoint(0, m_button.height())));
    const QList<QAction*> entries = menu->actions();
    const auto first = std::find_if(entries.begin(), entries.end(),
                                    [](const QAction* entry) { return entry->isEnabled(); });
    if (first != entries.end()) {
        menu->setActiveAction(*first); // once it is visible, for screen readers
    }
}

} // namespace vornadel
