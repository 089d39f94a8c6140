#include "platform/posix/StandardFiles.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace vornadel
{

void keepStandardFilesOpen()
{
    int file = ::open("/dev/null", O_RDWR);
    while (file >= 0 && file <= STDERR_FILENO) { // the lowest free number is taken first
        file = ::open("/dev/null", O_RDWR);
    }
    if (file >= 0) {
        ::close(file);
    }
    std::signal(SIGPIPE, SIG_IGN); // a failing write returns an error
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace vornadel
