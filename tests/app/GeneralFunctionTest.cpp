#include "app/GeneralFunction.h"
#include "app/ConsoleLog.h"

#include "tests/support/FakeMachine.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <string>

namespace vornadel::test
{

namespace
{

using testing::ElementsAre;

TEST(LogFile, GetsTheTextAsItStands)
{
    FakeShell shell;
    GeneralFunction::PrintNormalLog(shell, "a  'b'; gr\u00FC\u00DFe 100%s %n");
    LogShellOutput(shell, "echo %s");
    RunBufferedCommand(shell, "echo %s %n");
    EXPECT_THAT(shell.commands,
                ElementsAre("echo a  'b'; gr\u00FC\u00DFe 100%s %n >> /tmp/Vornadel.log",
                            "echo %s >> /tmp/Vornadel.log", "echo %s %n"));
}

constexpr std::size_t kLongestCommand = 1023; // and its terminator

TEST(LogFileDeathTest, EndsTheProcessRatherThanCutACommand)
{
    FakeShell shell;
    const std::string frame = " >> /tmp/Vornadel.log";
    const std::string why = "command of 1024 bytes does not fit";
    const testing::ExitedWithCode failed(EXIT_FAILURE);
    const std::string command(kLongestCommand, 'x');
    const std::string logged(kLongestCommand - frame.size(), 'x');
    QString text = QString("\u00FC").repeated(490); // two bytes each
    text += QString(static_cast<qsizetype>(logged.size() - std::string("echo ").size() - 980), 'x');
    GeneralFunction::PrintNormalLog(shell, text);
    LogShellOutput(shell, logged.c_str());
    RunBufferedCommand(shell, command.c_str());
    ASSERT_EQ(shell.commands.size(), 3U);
    for (const std::string& each : shell.commands) {
        EXPECT_EQ(each.size(), kLongestCommand);
    }
    EXPECT_EXIT(GeneralFunction::PrintNormalLog(shell, text + 'x'), failed, why);
    EXPECT_EXIT(LogShellOutput(shell, (logged + 'x').c_str()), failed, why);
    EXPECT_EXIT(RunBufferedCommand(shell, (command + 'x').c_str()), failed, why);
}

class TextFile : public testing::Test
{
protected:
    QString read(const std::string& bytes) const
    {
        return GeneralFunction::GetStringFromFile(
            QString::fromStdString(m_folder.write("text", bytes)));
    }

    const TemporaryFolder m_folder;
};

TEST_F(TextFile, IsReadWhole)
{
    EXPECT_EQ(read("one\r\ntwo \xC3\xBC\n"), "one\r\ntwo \u00FC\n");
    EXPECT_EQ(read(std::string("a\0b", 3)), QString("a%1b").arg(QChar(0)));
    const std::string large(3000000, 'x');
    EXPECT_EQ(read(large).size(), 3000000);
}

TEST_F(TextFile, IsEmptyAndThereWhenItIsMissing)
{
    const QString folder = QString::fromStdString(m_folder.path());
    const QString missing = GeneralFunction::GetStringFromFile(folder + "/missing");
    EXPECT_TRUE(missing.isEmpty());
    EXPECT_FALSE(missing.isNull());
    EXPECT_TRUE(GeneralFunction::GetStringFromFile(folder).isEmpty()) << "a folder";
}

TEST_F(TextFile, IsNullWhenItIsNoUtf8)
{
    EXPECT_TRUE(read("kext-dev-mode=1 \xFF").isNull());
    EXPECT_TRUE(read("\xC3").isNull()) << "cut in the middle of a character";
    EXPECT_TRUE(read("\xED\xA0\x80").isNull()) << "half a surrogate pair";
    EXPECT_FALSE(read("").isNull()) << "nothing is valid";
}

TEST(GetDirFromPath, EndsBeforeTheLastSeparator)
{
    EXPECT_EQ(GeneralFunction::GetDirFromPath("/Applications/Tool.app"), "/Applications");
    EXPECT_EQ(GeneralFunction::GetDirFromPath("Tool.app"), "");
    EXPECT_EQ(GeneralFunction::GetDirFromPath(""), "");
    EXPECT_EQ(GeneralFunction::GetDirFromPath("/Tool.app"), "");
    EXPECT_EQ(GeneralFunction::GetDirFromPath("/Applications/Tool.app/"), "/Applications/Tool.app");
    EXPECT_EQ(GeneralFunction::GetDirFromPath("a//"), "a/");
}

TEST(GetDirFromPath, ComparesTheLowEightBitsAlone)
{
    EXPECT_EQ(GeneralFunction::GetDirFromPath(QString("/a/b\u012Fc")), "/a/b");
    EXPECT_EQ(GeneralFunction::GetDirFromPath(QString("x\u262Fy")), "x");
    EXPECT_EQ(GeneralFunction::GetDirFromPath(QString("/a/b\u2F00c")), "/a")
        << "the high bits do not count";
}

TEST(GetNameFromPath, IsTheLastComponent)
{
    EXPECT_EQ(GeneralFunction::GetNameFromPath("/Applications/Tool.app"), "Tool.app");
    EXPECT_EQ(GeneralFunction::GetNameFromPath("/Applications/Tool.app/"), "Tool.app");
    EXPECT_EQ(GeneralFunction::GetNameFromPath("/Applications/Tool.app///"), "Tool.app");
    EXPECT_EQ(GeneralFunction::GetNameFromPath("Tool.app"), "Tool.app");
    EXPECT_EQ(GeneralFunction::GetNameFromPath("/"), "/");
    EXPECT_EQ(GeneralFunction::GetNameFromPath("///"), "/");
    EXPECT_EQ(GeneralFunction::GetNameFromPath(""), "");
}

TEST(ConsoleLog, PrintsNothingATerminalActsOn)
{
    testing::internal::CaptureStderr();
    ConsoleLog(QString::fromUtf8("one\033[2J\r\a\177 \tzw\u00f6lf\ntwo"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "one?[2J??? \tzw\u00f6lf\ntwo\n");
}

} // namespace

} // namespace vornadel::test
