#include "base/LastError.h"

namespace vornadel
{

std::atomic<int> LastError{0};

} // namespace vornadel
