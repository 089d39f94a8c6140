#include "cli/Verbs.h"

#include <algorithm>
#include <iterator>

namespace vornadel
{

namespace
{

const Verb* const kVerbs[] = {
    &kListVerb,     &kInfoVerb,       &kUpdateVerb,      &kVerifyVerb,
    &kReadVerb,     &kRestoreVerb,    &kEraseVerb,       &kRestartVerb,
    &kScalarVerb,   &kWaitVerb,       &kImageInfoVerb,   &kImageCheckVerb,
    &kImageGetVerb, &kImageSetVerb,   &kImageDiffVerb,   &kImagePropertiesVerb,
    &kDoctorVerb,   &kAccessShowVerb, &kAccessGrantVerb, &kAccessRevokeVerb,
    &kVersionVerb,
};

} // namespace

std::span<const Verb* const> allVerbs() { return kVerbs; }

const Verb* verbCalled(std::string_view name)
{
    const auto* const found = std::find_if(std::begin(kVerbs), std::end(kVerbs),
                                           [&](const Verb* verb) { return verb->name == name; });
    return found == std::end(kVerbs) ? nullptr : *found;
}

} // namespace vornadel
