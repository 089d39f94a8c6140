#include "platform/linux/LogindInhibitor.h"

#include "platform/linux/BusLibrary.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace vornadel
{

namespace
{

/// logind forbids sleep as long as the file is open.
class LogindHold final : public SleepHold
{
public:
    explicit LogindHold(int file) : m_file(file) {}
    ~LogindHold() override { ::close(m_file); }

private:
    int m_file;
};

/// What logind has answered.
struct LogindAnswer {
    bool came = false;
    int file = -1;
    std::string problem{};
};

int takeAnswer(sd_bus_message* message, void* data, sd_bus_error* /*error*/)
{
    LogindAnswer& answer = *static_cast<LogindAnswer*>(data);
    answer.came = true;
    int file = -1; // belongs to the message
    if (const sd_bus_error* const error = busLibrary().errorOf(message)) {
        answer.problem = error->message != nullptr ? error->message : error->name;
    } else if (const int result = busLibrary().read(message, "h", &file); result <= 0) {
        answer.problem = "logind's answer cannot be read";
    } else if (answer.file = fcntl(file, F_DUPFD_CLOEXEC, 0); answer.file < 0) {
        answer.problem = std::generic_category().message(errno);
    }
    return 1;
}

/// One call on a connection of its own.
class InhibitCall
{
public:
    InhibitCall() { m_error = busLibrary().openSystem(&m_bus); }
    InhibitCall(const InhibitCall&) = delete;
    InhibitCall& operator=(const InhibitCall&) = delete;
    ~InhibitCall()
    {
        busLibrary().unrefMessage(m_message);
        busLibrary().closeUnref(m_bus);
    }

    LogindAnswer make(const std::string& reason, std::chrono::milliseconds limit)
    {
        const BusLibrary& library = busLibrary();
        LogindAnswer answer;
        if (succeeds(m_error) &&
            succeeds(library.newMethodCall(m_bus, &m_message, "org.freedesktop.login1",
                                           "/org/freedesktop/login1",
                                           "org.freedesktop.login1.Manager", "Inhibit")) &&
            succeeds(library.append(m_message, "ssss", "sleep:shutdown:handle-lid-switch",
                                    "Vornadel", reason.c_str(), "block")) &&
            succeeds(library.callAsync(m_bus, nullptr, m_message, takeAnswer, &answer, 0))) {
            await(answer, limit);
        }
        if (!answer.came) {
            answer.problem =
                m_error < 0 ? std::generic_category().message(-m_error) : "logind does not answer";
        }
        return answer;
    }

private:
    bool succeeds(int result)
    {
        m_error = result == -EINTR ? 0 : result;
        return m_error >= 0;
    }

    /// Handles what comes over the bus. Not one blocking call: its time limit would begin only
    /// after the bus has accepted the connection.
    void await(const LogindAnswer& answer, std::chrono::milliseconds limit)
    {
        using std::chrono::microseconds;
        const auto end = std::chrono::steady_clock::now() + limit;
        while (!answer.came && succeeds(busLibrary().process(m_bus, nullptr))) {
            const auto left =
                std::chrono::duration_cast<microseconds>(end - std::chrono::steady_clock::now());
            const bool isIdle = m_error == 0;
            if (left <= microseconds::zero() ||
                (isIdle && !answer.came &&
                 !succeeds(busLibrary().wait(m_bus, static_cast<std::uint64_t>(left.count()))))) {
                return;
            }
        }
    }

    sd_bus* m_bus = nullptr;
    sd_bus_message* m_message = nullptr;
    int m_error = 0;
};

} // namespace

std::unique_ptr<SleepHold> LogindInhibitor::hold(const std::string& reason, std::string& problem)
{
    if (!busLibrary().found) {
        problem = kNoBusLibrary;
        return nullptr;
    }
    const LogindAnswer answer = InhibitCall().make(reason, m_limit);
    problem = answer.problem;
    return answer.file < 0 ? nullptr : std::make_unique<LogindHold>(answer.file);
}

} // namespace vornadel
