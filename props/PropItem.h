#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vornadel
{

/// One configurable property of the hub: a bit field in one byte of the descriptor block, with the
/// names of its values. Lists share the items, so a change through one list shows in the others.
struct PropItem {
    /// Number of the section in the property file, 0x00-0xFE. Items with key 0 are not bound to the
    /// image: they are never refreshed from it and are described without an address.
    std::uint8_t key{};
    /// Offset in the descriptor block of the enabling field's byte; 0 for none.
    std::uint32_t baseOnAddr{};
    std::uint8_t baseOnMask{}; ///< the enabling field's bits; 0 for none
    std::uint32_t addr{};      ///< offset in the descriptor block of the property's byte; unchecked
    std::uint8_t mask{};       ///< the property's bits in that byte
    std::string pageName;      ///< shown only if it is exactly one of kPropertyPages
    std::string groupName;     ///< logged, never shown
    std::string property;      ///< what the column "property" shows; the same as propName
    std::string propName;
    std::string propDesc;
    std::string curValue;              ///< compared with the entries of dataList as text
    std::string curDataValue;          ///< never used
    std::string curPropValue;          ///< never used
    std::vector<std::string> propList; ///< labels of the options, at most 16
    std::vector<std::string> dataList; ///< their values, parallel to propList; free text
};

using PropItemList = std::vector<std::shared_ptr<PropItem>>;

} // namespace vornadel
