#include "platform/posix/StandardFiles.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace vornadel
{

void keepStandardFilesOpen(ClosedFile closed)
{
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file) {
        if (::fcntl(file, F_GETFD) < 0) { // this number is the lowest free one, so open() takes it
            const int wrongWay = file == STDIN_FILENO ? O_WRONLY : O_RDONLY;
            ::open("/dev/null", closed == ClosedFile::Fails ? wrongWay : O_RDWR);
        }
    }
    std::signal(SIGPIPE, SIG_IGN); // a failing write returns an error
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace vornadel
