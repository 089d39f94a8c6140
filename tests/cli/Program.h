#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace vornadel::test
{

/// A run of the real vornadelctl as a child process. It is killed if it still runs at the end of
/// the test.
class Program
{
public:
    /// The child ignores no ending signal, even if the test inherited them as ignored, as a
    /// script's background job does.
    explicit Program(std::vector<std::string> arguments);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    /// Reads standard output until `text` appears; false if the program ends first, or prints
    /// nothing for 20 s.
    bool waitFor(std::string_view text) { return waitIn(m_outPipe, m_out, text); }
    /// The same on standard error.
    bool waitForError(std::string_view text) { return waitIn(m_errPipe, m_err, text); }
    void send(int signal) const;
    /// Closes the reading end of standard output.
    void stopReading();
    /// Reads the rest and returns the exit status, or 128 plus the signal that killed the program.
    int finish();

    const std::string& out() const { return m_out; }
    const std::string& err() const { return m_err; } ///< after finish()

private:
    bool waitIn(int pipe, std::string& seen, std::string_view text) const;
    bool readSome(int pipe, std::string& text) const;

    pid_t m_pid = -1;
    int m_outPipe = -1;
    int m_errPipe = -1;
    std::string m_out;
    std::string m_err;
};

} // namespace vornadel::test
