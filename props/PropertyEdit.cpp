#include "props/PropertyEdit.h"

#include "base/GenFun.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace vornadel
{

std::string optionText(const PropItem& item, std::size_t at)
{
    return item.dataList[at] + " : " + item.propList[at];
}

namespace
{

/// The text of the option with this value, or else another text.
std::string optionTextOr(const PropItem& item, const std::string& value, const std::string& other)
{
    const auto option = std::find(item.dataList.begin(), item.dataList.end(), value);
    return option == item.dataList.end()
               ? other
               : optionText(item, static_cast<std::size_t>(option - item.dataList.begin()));
}

} // namespace

std::string valueText(const PropItem& item)
{
    return optionTextOr(item, item.curValue, kEmptyValue);
}

std::string textOfValue(const PropItem& item, std::uint8_t value)
{
    const std::string number = std::to_string(value);
    return optionTextOr(item, number, number);
}

std::uint8_t storedValue(const PropItem& item, std::span<const std::uint8_t> block)
{
    return item.addr < block.size() ? GF_GetMaskValue(&block[item.addr], item.mask)
                                    : std::uint8_t{0};
}

bool differs(const PropItem& item, std::span<const std::uint8_t> before,
             std::span<const std::uint8_t> after)
{
    return item.key != 0 && storedValue(item, before) != storedValue(item, after);
}

void refreshValues(std::span<const std::shared_ptr<PropItem>> items,
                   std::span<const std::uint8_t> block)
{
    for (const std::shared_ptr<PropItem>& item : items) {
        if (item->key != 0) {
            item->curValue = std::to_string(GF_GetMaskValue(&block[item->addr & 0xFF], item->mask));
        }
    }
}

void refreshDifferentValues(std::span<const std::shared_ptr<PropItem>> items,
                            std::span<const std::uint8_t> before,
                            std::span<const std::uint8_t> after)
{
    for (const std::shared_ptr<PropItem>& item : items) {
        const std::size_t at = item->addr & 0xFF;
        if (((before[at] ^ after[at]) & item->mask) != 0) {
            refreshValues({&item, 1}, after);
        }
    }
}

std::uint8_t enablingValue(const PropItem& item, std::span<const std::uint8_t> block)
{
    return item.baseOnAddr < block.size()
               ? GF_GetMaskValue(&block[item.baseOnAddr], item.baseOnMask)
               : std::uint8_t{0};
}

bool isLocked(const PropItem& item, std::span<const std::uint8_t> block)
{
    return item.baseOnAddr != 0 && item.baseOnMask != 0 && enablingValue(item, block) == 0;
}

std::string whyLocked(const PropItem& item, const PropItemList& items)
{
    const auto controlling = std::find_if(items.begin(), items.end(), [&item](const auto& other) {
        return other->addr == item.baseOnAddr && other->mask == item.baseOnMask;
    });
    std::uint8_t high = 0;
    std::uint8_t low = 0;
    GF_Mask2Bits(item.baseOnMask, &high, &low);
    std::array<char, 64> bits{};
    std::snprintf(bits.data(), bits.size(), "(Addr 0x%02X[%d:%d])", item.baseOnAddr,
                  static_cast<std::int8_t>(high), static_cast<std::int8_t>(low));
    return "This Item is Not Editable.  To Change this Item,you should set\n\n " +
           (controlling == items.end() ? "(null)" : (*controlling)->propName) + '\n' + bits.data() +
           "\n\nfrom 0 to 1";
}

void chooseOption(PropItem& item, int position, std::span<std::uint8_t> block)
{
    if (item.addr < block.size()) {
        GF_SetMaskValue(&block[item.addr], item.mask, static_cast<std::uint8_t>(position));
    }
    item.curValue = std::to_string(position);
}

} // namespace vornadel
