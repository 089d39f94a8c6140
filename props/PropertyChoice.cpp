#include "props/PropertyChoice.h"

#include "props/Pages.h"
#include "props/PropertyEdit.h"

#include <algorithm>
#include <iterator>

namespace vornadel
{

namespace
{

template <typename Fits>
PropItemList itemsThat(const PropItemList& items, const Fits& fits)
{
    PropItemList fitting;
    std::copy_if(items.begin(), items.end(), std::back_inserter(fitting),
                 [&fits](const auto& item) { return fits(*item); });
    return fitting;
}

} // namespace

std::string fullName(const PropItem& item) { return item.pageName + '/' + item.propName; }

std::string distinctName(const PropItem& item, const PropItemList& items)
{
    return propertiesNamed(items, item.propName).size() > 1 ? fullName(item) : item.propName;
}

PropItemList propertiesNamed(const PropItemList& items, std::string_view name)
{
    PropItemList named =
        itemsThat(items, [name](const auto& each) { return each.propName == name; });
    return named.empty()
               ? itemsThat(items, [name](const auto& each) { return fullName(each) == name; })
               : named;
}

std::vector<std::size_t> optionsNamed(const PropItem& item, std::string_view text)
{
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < item.dataList.size(); ++i) {
        if (item.dataList[i] == text || item.propList[i] == text || optionText(item, i) == text) {
            positions.push_back(i);
        }
    }
    return positions;
}

bool isOnAPage(const PropItem& item)
{
    return std::find(kPropertyPages.begin(), kPropertyPages.end(), item.pageName) !=
           kPropertyPages.end();
}

PropertyFlaw flawOf(const PropItem& item)
{
    if (!isOnAPage(item)) {
        return PropertyFlaw::NotOnAPage;
    }
    if (item.dataList.empty()) {
        return PropertyFlaw::NoOptions;
    }
    return item.mask == 0 ? PropertyFlaw::NoBits : PropertyFlaw::None;
}

std::string valueOrNumber(const PropItem& item)
{
    std::string text = valueText(item);
    return text == kEmptyValue ? item.curValue : text;
}

std::vector<PropertyDifference> propertyDifferences(const PropItemList& items,
                                                    std::span<const std::uint8_t> before,
                                                    std::span<const std::uint8_t> after)
{
    std::vector<std::string> old;
    refreshValues(items, before);
    std::transform(items.begin(), items.end(), std::back_inserter(old),
                   [](const auto& item) { return valueOrNumber(*item); });
    refreshValues(items, after);
    std::vector<PropertyDifference> differences;
    for (std::size_t i = 0; i < items.size(); ++i) {
        std::string now = valueOrNumber(*items[i]);
        if (now != old[i]) {
            differences.push_back(
                {distinctName(*items[i], items), std::move(old[i]), std::move(now)});
        }
    }
    return differences;
}

void omitProperties(const PropItemList& items, std::span<std::uint8_t> compared)
{
    for (const auto& item : items) {
        const std::size_t at = item->addr & 0xFF;
        if (item->key != 0 && at < compared.size()) {
            compared[at] = static_cast<std::uint8_t>(compared[at] & ~item->mask);
        }
    }
}

} // namespace vornadel
