#include "config/Version.h"

namespace vornadel
{

const char* const kToolCommit = VORNADEL_COMMIT;

std::string versionText(const std::string& program)
{
    return program + ' ' + kToolVersion + " (" + kToolCommit + ')';
}

} // namespace vornadel
