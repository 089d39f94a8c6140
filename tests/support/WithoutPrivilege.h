#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

namespace vornadel::test
{

/// While it lives, root runs as an ordinary user, to whom permissions apply. No effect for others.
class WithoutPrivilege
{
public:
    WithoutPrivilege() : m_wasRoot(geteuid() == 0)
    {
        if (m_wasRoot && seteuid(65534) != 0) {
            ADD_FAILURE() << "root cannot become nobody";
        }
    }
    WithoutPrivilege(const WithoutPrivilege&) = delete;
    WithoutPrivilege& operator=(const WithoutPrivilege&) = delete;
    ~WithoutPrivilege()
    {
        if (m_wasRoot && seteuid(0) != 0) {
            std::abort();
        }
    }

private:
    bool m_wasRoot;
};

} // namespace vornadel::test
