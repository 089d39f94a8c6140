#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace vornadel::test
{

/// A run of the real vornadelctl as a child process. One that is still running at the end of the
/// test is killed.
class Program
{
public:
    /// `environment` is added to the test's own. The signals in `ignored` are ignored, as under
    /// nohup(1); those that end a program are not, even when the test itself ignores them as a
    /// background job of a script does.
    explicit Program(std::vector<std::string> arguments, std::vector<std::string> environment = {},
                     std::initializer_list<int> ignored = {});
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    /// Reads standard output until `text` has come; false when the program ended, or fell silent
    /// for 20 s, before.
    bool waitFor(std::string_view text);
    void send(int signal) const;
    /// Nobody reads standard output from now on.
    void stopReading();
    /// Reads what is left and returns the exit status; 128 plus the signal when one killed it.
    int finish();

    const std::string& out() const { return m_out; }
    const std::string& err() const { return m_err; } ///< after finish()

private:
    bool readSome(int pipe, std::string& text) const;

    pid_t m_pid = -1;
    int m_outPipe = -1;
    int m_errPipe = -1;
    std::string m_out;
    std::string m_err;
};

} // namespace vornadel::test
