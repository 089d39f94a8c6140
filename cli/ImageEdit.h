#pragma once

#include "firmware/FieldEdit.h"
#include "props/PropItem.h"

#include <cstddef>
#include <memory>
#include <string>

namespace vornadel
{

/// One edit of an image, as NAME=VALUE names it.
struct ImageEdit {
    FieldEdit field{};
    std::shared_ptr<PropItem> property{}; ///< null: the edit is one of `field`
    std::size_t position = 0;             ///< of the property's option

    bool sameTarget(const ImageEdit& other) const;
};

/// Whether a word names a field, so that no property file is needed.
bool namesAField(const std::string& word);

/// Reads NAME=VALUE. NAME is that of a field, of a property, or PAGE/NAME; VALUE is the text of the
/// field ("new" makes a Container ID) or an option, by its value or its label. Returns what is
/// wrong in one line without a full stop; empty if `edit` is the edit.
std::string parseEdit(const std::string& word, const PropItemList& items, ImageEdit& edit);

/// In words, for a field flaw of an image.
std::string wordsOf(FieldFlaw flaw, const FieldEdit& edit);

} // namespace vornadel
