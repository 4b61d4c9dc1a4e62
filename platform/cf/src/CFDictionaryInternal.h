// What other CF types need to know about a dictionary beyond its public
// interface: how it describes its elements, so that code printing the
// entries of an arbitrary dictionary never treats a raw pointer as an object.
#ifndef HALVANE_CF_DICTIONARY_INTERNAL_H
#define HALVANE_CF_DICTIONARY_INTERNAL_H

#include "CFStringInternal.h"

#include <CoreFoundation/CFDictionary.h>

namespace halvane::detail {

// The description callbacks the dictionary was created with (NULL for raw
// pointers). CFCopyDescription means the elements are CF objects.
CFDictionaryCopyDescriptionCallBack keyDescriptionCallBack(CFDictionaryRef d);
CFDictionaryCopyDescriptionCallBack valueDescriptionCallBack(CFDictionaryRef d);

// Appends what describe gives for element, or "<0x...>" when there is no
// callback or it returns NULL: how a dictionary prints its own entries.
void appendElementDescription(TextBuilder& text, CFDictionaryCopyDescriptionCallBack describe, const void* element);

}  // namespace halvane::detail

#endif  // HALVANE_CF_DICTIONARY_INTERNAL_H
