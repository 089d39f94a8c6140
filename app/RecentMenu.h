#pragma once

#include <QBasicTimer>
#include <QObject>

#include <functional>
#include <string>

class QPushButton;

namespace vornadel
{

class RecentFiles;

/// Lists the images used last in a menu at a panel's button: on press and hold, right click, the
/// menu key, and Down. A plain click stays the button's own. Belongs to the button.
class RecentMenu final : public QObject
{
public:
    /// `open` is called with the path of the chosen image.
    RecentMenu(QPushButton& button, RecentFiles& files,
               std::function<void(const std::string&)> open);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void popUp();

    QPushButton& m_button;
    RecentFiles& m_files;
    std::function<void(const std::string&)> m_open;
    QBasicTimer m_held;
};

} // namespace vornadel
