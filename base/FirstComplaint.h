#pragma once

#include <string>

namespace vornadel
{

/// The first line of the INI reader's first error message since resetFirstComplaint(). The reader
/// passes its messages to a plain function, hence the global. Main thread only.
const std::string& firstComplaint();
void resetFirstComplaint();

/// A printf-like callback for the reader. Keeps the first line of the first message and drops the
/// rest: that is the faulty line itself, which may be unprintable.
int keepFirstComplaint(const char* format, ...);

} // namespace vornadel
