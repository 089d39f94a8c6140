#include "cli/Findings.h"
#include "cli/Verbs.h"

namespace vornadel
{

namespace
{

int doctorVerb(const Command& command)
{
    Findings findings;
    for (const auto look :
         {configurationFindings, usbFindings, hubFindings, ruleFindings, logFindings}) {
        const Findings found = look(command);
        findings.insert(findings.end(), found.begin(), found.end());
    }
    return tellFindings(command, findings);
}

} // namespace

const Verb kDoctorVerb = {
    .name = "doctor",
    .summary = "Look for what keeps the tool from working, and say what to do",
    .run = doctorVerb,
    .selectsHub = false,
    .examples = "vornadelctl doctor\n",
};

} // namespace vornadel
