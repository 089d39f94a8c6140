#pragma once

#include <string>

namespace vornadel
{

/// The first line that the INI reader complained with since resetFirstComplaint(). The reader hands
/// its messages to a plain function, hence the one place for all. Main thread only.
const std::string& firstComplaint();
void resetFirstComplaint();

/// A printf-like function for the reader to call. Keeps the first line of the first message and
/// drops the rest: the faulty line itself, which need not be fit for a terminal.
int keepFirstComplaint(const char* format, ...);

} // namespace vornadel
