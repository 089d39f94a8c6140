#pragma once

namespace vornadel
{

/// What happens to the use of a standard file that was closed.
enum class ClosedFile {
    Works, ///< input is empty, and output is dropped
    Fails, ///< so that nothing counts as written
};

/// Opens /dev/null for each of standard input, output and error that is closed, and ignores SIGPIPE
/// and SIGXFSZ. Call it first in main(). Otherwise the next file to be opened, perhaps a hub's
/// node, would take the free number and receive the console output.
void keepStandardFilesOpen(ClosedFile closed = ClosedFile::Works);

} // namespace vornadel
