// The administrator scripts, call by call.

#include "platform/macos/AuthorizedRun.h"

#include "tests/macos/MacTest.h"

#include <string>

namespace vornadel::test
{
namespace
{

using testing::IsEmpty;

class AuthorizedRunTest : public MacTest
{
protected:
    static Calls runOf(const std::string& script)
    {
        return {"AuthorizationCreate(no rights, no environment, flags 0) = authorization 1",
                "AuthorizationExecuteWithPrivileges(authorization 1, " + script +
                    ", flags 0, no arguments, no pipe)",
                "AuthorizationFree(authorization 1, flags 0)"};
    }

    AuthorizedRun m_run;
};

TEST_F(AuthorizedRunTest, RunsAScriptByTheseCalls)
{
    const std::string script = "/Applications/a b (c).app/Contents/Resources/unload";
    EXPECT_TRUE(m_run.start(script));
    EXPECT_EQ(mac.calls(), runOf(script));
    EXPECT_THAT(mac.alive(), IsEmpty());
}

TEST_F(AuthorizedRunTest, TakesARefusalForAStart)
{
    mac.executionResult = errAuthorizationCanceled;
    EXPECT_TRUE(m_run.start("/x/load"));
    Calls calls = runOf("/x/load");
    calls[1] += " = 0xFFFF159A";
    EXPECT_EQ(mac.calls(), calls);
    EXPECT_THAT(mac.alive(), IsEmpty());
}

TEST_F(AuthorizedRunTest, GoesOnWithoutAnAuthorization)
{
    mac.authorizationResult = errAuthorizationDenied;
    EXPECT_TRUE(m_run.start("/x/load"));
    EXPECT_EQ(mac.calls(),
              (Calls{"AuthorizationCreate(no rights, no environment, flags 0) = 0xFFFF159B",
                     "AuthorizationExecuteWithPrivileges(none, /x/load, flags 0, no arguments, no "
                     "pipe) = 0xFFFF159E",
                     "AuthorizationFree(none, flags 0)"}));
    EXPECT_THAT(mac.alive(), IsEmpty());
}

} // namespace
} // namespace vornadel::test
