#pragma once

namespace vornadel
{

/// Opens /dev/null for each of standard input, output and error that is closed, and ignores SIGPIPE
/// and SIGXFSZ. To be called first in main(): otherwise the next file that is opened, a connection
/// or a hub's node, would take the free number and get what is meant for the console.
void keepStandardFilesOpen();

} // namespace vornadel
