#pragma once

#include "tests/support/RecordingReporter.h"

#include <sstream>
#include <string>
#include <vector>

namespace vornadel::test
{

/// All reports of a flow, in order: "reset", "blue TEXT", "red TEXT", and "10%" for a value, or
/// "10% posted" for one without waiting.
inline std::vector<std::string> told(const RecordingReporter& reporter)
{
    using Kind = RecordingReporter::Kind;
    std::vector<std::string> lines;
    for (const RecordingReporter::Entry& entry : reporter.entries) {
        std::ostringstream line;
        switch (entry.kind) {
        case Kind::Reset:
            line << "reset";
            break;
        case Kind::Blue:
            line << "blue " << entry.text;
            break;
        case Kind::Red:
            line << "red " << entry.text;
            break;
        case Kind::Progress:
            line << entry.percent << '%' << (entry.wait == Wait::Yes ? "" : " posted");
            break;
        }
        lines.push_back(line.str());
    }
    return lines;
}

} // namespace vornadel::test
