#include "platform/posix/SystemShell.h"

#include <cstdlib>
#include <unistd.h>

namespace vornadel
{

int SystemShell::run(const std::string& command) { return std::system(command.c_str()); }

bool SystemShell::exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

} // namespace vornadel
