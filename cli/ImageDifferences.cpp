#include "cli/ImageDifferences.h"

#include "cli/ImageSource.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace vornadel
{

namespace
{

constexpr std::size_t kMostLines = 16; // of ranges

std::string quoted(const std::string& text) { return '"' + printable(text) + '"'; }

/// Strings in quotation marks, so that empty ones and blanks show.
bool isString(std::string_view field)
{
    return field == "manufacturer" || field == "product" || field == "serial";
}

template <typename Difference>
Json jsonOfEach(const std::vector<Difference>& differences)
{
    Json list = Json::array();
    for (const Difference& each : differences) {
        list.push_back({{"name", each.name}, {"before", each.before}, {"after", each.after}});
    }
    return list;
}

} // namespace

ImageDifferences findDifferences(const FwImage& before, const FwImage& after,
                                 const PropItemList& items)
{
    ImageDifferences found;
    found.fields = FwImage_FieldDifferences(before, after);
    ComparedBits compared(static_cast<std::size_t>(std::min(before.size, after.size)), 0xFF);
    FwImage_OmitFields(compared, before, after);
    if (before.loaded && after.loaded) {
        found.properties = propertyDifferences(items, FwImage_Block(before), FwImage_Block(after));
        const auto block = before.descriptor - before.data.get();
        if (block == after.descriptor - after.data.get()) {
            omitProperties(items, std::span(compared).subspan(static_cast<std::size_t>(block)));
        }
    }
    found.ranges = differentRanges(bytesOf(before), bytesOf(after), compared);
    return found;
}

std::string tell(const Command& command, const ImageDifferences& differences)
{
    command.result.differences = std::make_shared<const Json>(jsonOf(differences));
    return linesOf(differences);
}

std::string linesOf(const ImageDifferences& differences)
{
    std::string lines;
    for (const FieldDifference& field : differences.fields) {
        const bool string = isString(field.name);
        lines += std::string(field.name) + ": " +
                 (string ? quoted(field.before) : printable(field.before)) + " -> " +
                 (string ? quoted(field.after) : printable(field.after)) + '\n';
    }
    for (const PropertyDifference& property : differences.properties) {
        lines += printable(property.name) + ": " + printable(property.before) + " -> " +
                 printable(property.after) + '\n';
    }
    for (std::size_t i = 0; i < differences.ranges.size(); ++i) {
        const DifferentRange& range = differences.ranges[i];
        if (i == kMostLines) {
            lines += "and " + std::to_string(differences.ranges.size() - i) + " more ranges\n";
            break;
        }
        const bool one = range.end - range.begin == 1;
        lines += "0x" + hex4(range.begin) + (one ? "" : "-0x" + hex4(range.end - 1)) + ": " +
                 std::to_string(range.bytes) +
                 (range.bytes == 1 ? " byte differs\n" : " bytes differ\n");
    }
    return lines;
}

Json jsonOf(const ImageDifferences& differences)
{
    Json ranges = Json::array();
    for (const DifferentRange& range : differences.ranges) {
        ranges.push_back({{"begin", range.begin}, {"end", range.end}, {"bytes", range.bytes}});
    }
    return {{"fields", jsonOfEach(differences.fields)},
            {"properties", jsonOfEach(differences.properties)},
            {"ranges", std::move(ranges)}};
}

} // namespace vornadel
