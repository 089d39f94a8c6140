#include "cli/ImageEdit.h"

#include "cli/ShownText.h"
#include "props/PropertyChoice.h"
#include "props/PropertyEdit.h"

#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

std::string inQuotes(const std::string& text) { return '"' + printable(text) + '"'; }

std::string joined(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : ", ") + inQuotes(text);
    }
    return all;
}

std::string whyNoField(FieldEdit& edit)
{
    if (edit.field == IdentityField::ContainerId && edit.text == "new") {
        edit.text = newContainerId();
    }
    const FieldFlaw flaw = findFlaw(edit);
    return flaw == FieldFlaw::None ? "" : wordsOf(flaw, edit);
}

std::string whyNotSet(const PropItem& item)
{
    switch (flawOf(item)) {
    case PropertyFlaw::None:
        return {};
    case PropertyFlaw::NotOnAPage:
        return inQuotes(item.propName) + " cannot be set: it is on no page of the editor";
    case PropertyFlaw::NoOptions:
        return inQuotes(item.propName) + " cannot be set: it is a constant, without options";
    case PropertyFlaw::NoBits:
        return inQuotes(item.propName) + " cannot be set: its mask is 0, so it has no bits";
    }
    return {};
}

std::string chooseByText(const PropItem& item, const std::string& value, std::size_t& position)
{
    if (std::string why = whyNotSet(item); !why.empty()) {
        return why;
    }
    const std::vector<std::size_t> positions = optionsNamed(item, value);
    if (positions.size() == 1) {
        position = positions.front();
        return {};
    }
    std::vector<std::string> options;
    if (positions.empty()) {
        for (std::size_t i = 0; i < item.dataList.size(); ++i) {
            options.push_back(optionText(item, i));
        }
        return inQuotes(item.propName) + " cannot be " + inQuotes(value) +
               "; its options are: " + joined(options);
    }
    for (const std::size_t each : positions) {
        options.push_back(optionText(item, each));
    }
    return inQuotes(value) + " means several options of " + inQuotes(item.propName) + ": " +
           joined(options);
}

/// With a name that is known.
std::string parsePair(const std::string& name, const std::string& value,
                      const PropItemList& properties, ImageEdit& edit)
{
    if (const std::optional<IdentityField> field = identityFieldNamed(name)) {
        edit.field = {*field, value};
        return whyNoField(edit.field);
    }
    if (properties.size() > 1) {
        std::vector<std::string> names;
        for (const auto& each : properties) {
            names.push_back(fullName(*each));
        }
        return "several properties are called " + inQuotes(name) + ": " + joined(names);
    }
    edit.property = properties.front();
    return chooseByText(*edit.property, value, edit.position);
}

} // namespace

bool ImageEdit::sameTarget(const ImageEdit& other) const
{
    return property == other.property && (property != nullptr || field.field == other.field.field);
}

bool namesAField(const std::string& word)
{
    return identityFieldNamed(word.substr(0, word.find('='))).has_value();
}

std::string parseEdit(const std::string& word, const PropItemList& items, ImageEdit& edit)
{
    edit = {};
    const std::size_t first = word.find('=');
    if (first == std::string::npos || first == 0) {
        return inQuotes(word) + " is not NAME=VALUE";
    }
    // The name of a property may hold "=", too. The shortest name for which the rest makes sense.
    std::string why;
    for (std::size_t at = first; at != std::string::npos; at = word.find('=', at + 1)) {
        const std::string name = word.substr(0, at);
        const PropItemList properties = propertiesNamed(items, name);
        if (identityFieldNamed(name) || !properties.empty()) {
            edit = {};
            const std::string problem = parsePair(name, word.substr(at + 1), properties, edit);
            if (problem.empty()) {
                return {};
            }
            why = why.empty() ? problem : why;
        }
    }
    return why.empty() ? "there is no field and no property " + inQuotes(word.substr(0, first))
                       : why;
}

std::string wordsOf(FieldFlaw flaw, const FieldEdit& edit)
{
    const std::string name(kIdentityFieldNames.at(static_cast<std::size_t>(edit.field)));
    switch (flaw) {
    case FieldFlaw::None:
        return {};
    case FieldFlaw::NotAnId:
        return name + " cannot be " + inQuotes(edit.text) + ": an id has four hex digits";
    case FieldFlaw::NotAContainerId:
        return name + " cannot be " + inQuotes(edit.text) +
               ": a Container ID is 8-4-4-4-12 hex digits, or \"new\"";
    case FieldFlaw::NotUtf8:
        return name + " cannot be " + inQuotes(edit.text) + ": it is not UTF-8";
    case FieldFlaw::TooLong:
        return "manufacturer, product and serial would have more than " +
               std::to_string(kMostCharacters) + " characters together";
    case FieldFlaw::NoVersion:
        return "the image has no firmware version, so it cannot be saved";
    }
    return {};
}

} // namespace vornadel
