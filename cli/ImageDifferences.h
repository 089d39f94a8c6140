#pragma once

#include "cli/Json.h"
#include "firmware/ImageDiff.h"
#include "props/PropertyChoice.h"

#include <string>
#include <vector>

namespace vornadel
{

struct Command;

/// In what two images differ: in fields, in properties, and at addresses that neither explains.
struct ImageDifferences {
    std::vector<FieldDifference> fields;
    std::vector<PropertyDifference> properties;
    std::vector<DifferentRange> ranges;

    bool none() const { return fields.empty() && properties.empty() && ranges.empty(); }
};

/// Both records hold bytes; one without a descriptor block is compared by address alone. `items`
/// may be empty; their current values become those of `after`.
ImageDifferences findDifferences(const FwImage& before, const FwImage& after,
                                 const PropItemList& items);

/// The lines of the differences; they also go into the result for programs.
std::string tell(const Command& command, const ImageDifferences& differences);

/// One line a difference, "vid: 1209 -> 1A2B"; of very many ranges only the first ones.
std::string linesOf(const ImageDifferences& differences);

/// {"fields": [{"name", "before", "after"}], "properties": [the same],
/// "ranges": [{"begin", "end", "bytes"}]}
Json jsonOf(const ImageDifferences& differences);

} // namespace vornadel
