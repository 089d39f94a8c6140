#include "platform/linux/LauncherEntry.h"

#include "platform/linux/BusLibrary.h"

#include <cerrno>
#include <system_error>

namespace vornadel
{

namespace
{

constexpr const char* kDesktopFile = "application://org.vornadel.Vornadel.desktop";

/// A connection of its own: when it ends, for whatever reason, the desktop drops the progress.
class LauncherProgress final : public TaskbarProgress
{
public:
    ~LauncherProgress() override
    {
        if (m_bus != nullptr && busLibrary().isReady(m_bus) > 0) {
            tell(0, false);
        }
        busLibrary().closeUnref(m_bus);
    }

    /// 0, or a negative error number.
    int connect(std::chrono::milliseconds limit)
    {
        using std::chrono::microseconds;
        const BusLibrary& library = busLibrary();
        const auto end = std::chrono::steady_clock::now() + limit;
        int error = library.openUser(&m_bus);
        while (error >= 0 && library.isReady(m_bus) == 0) {
            const auto left =
                std::chrono::duration_cast<microseconds>(end - std::chrono::steady_clock::now());
            if (left <= microseconds::zero()) {
                return -ETIMEDOUT;
            }
            error = library.process(m_bus, nullptr);
            if (error == 0 && library.isReady(m_bus) == 0) {
                error = library.wait(m_bus, static_cast<std::uint64_t>(left.count()));
            }
            error = error == -EINTR ? 0 : error;
        }
        return error;
    }

    void show(double part) override { tell(part, true); }

private:
    void tell(double part, bool isVisible)
    {
        const BusLibrary& library = busLibrary();
        while (library.process(m_bus, nullptr) > 0) {
            // Nothing that comes is for us, and the bus must not fill up with it.
        }
        library.emitSignal(m_bus, "/com/canonical/unity/launcherentry/vornadel",
                           "com.canonical.Unity.LauncherEntry", "Update", "sa{sv}", kDesktopFile, 2,
                           "progress", "d", part, "progress-visible", "b", isVisible ? 1 : 0);
    }

    sd_bus* m_bus = nullptr;
};

} // namespace

std::unique_ptr<TaskbarProgress> LauncherEntry::begin(std::string& problem)
{
    if (!busLibrary().found) {
        problem = kNoBusLibrary;
        return nullptr;
    }
    auto progress = std::make_unique<LauncherProgress>();
    if (const int error = progress->connect(m_limit); error < 0) {
        problem = std::generic_category().message(-error);
        return nullptr;
    }
    progress->show(0);
    return progress;
}

} // namespace vornadel
