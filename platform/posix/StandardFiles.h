#pragma once

namespace vornadel
{

/// Opens /dev/null for each of standard input, output and error that is closed, and ignores SIGPIPE
/// and SIGXFSZ. Call it first in main(). Otherwise the next file to be opened, perhaps a hub's
/// node, would take the free number and receive the console output.
void keepStandardFilesOpen();

} // namespace vornadel
