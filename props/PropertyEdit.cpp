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

std::string valueText(const PropItem& item)
{
    const auto option = std::find(item.dataList.begin(), item.dataList.end(), item.curValue);
    return option == item.dataList.end()
               ? kEmptyValue
               : optionText(item, static_cast<std::size_t>(option - item.dataList.begin()));
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
