#pragma once

namespace vornadel
{

/// Opens what of standard input, output and error is closed on /dev/null, and makes a reader that
/// goes away or a file that may not grow no reason to die. For the beginning of main(): the next
/// file to be opened, a connection or a hub's node, would take the free number otherwise, and get
/// what is meant for the console.
void keepStandardFilesOpen();

} // namespace vornadel
