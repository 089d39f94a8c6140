#pragma once

#include <QApplication>

namespace vornadel::test
{

/// While it lives, no two clicks make a double click; a test clicks faster than a user.
class SingleClicks
{
public:
    SingleClicks() { QApplication::setDoubleClickInterval(0); }
    SingleClicks(const SingleClicks&) = delete;
    SingleClicks& operator=(const SingleClicks&) = delete;
    ~SingleClicks() { QApplication::setDoubleClickInterval(m_before); }

private:
    const int m_before = QApplication::doubleClickInterval();
};

} // namespace vornadel::test
