#include "config/ToolPlace.h"

namespace vornadel
{

ToolPlace toolPlaceOf(const MainBundle& bundle)
{
    return {bundle.path, bundle.bundled,
            bundle.bundled ? bundle.path + "/Contents/Resources" : bundle.path};
}

} // namespace vornadel
