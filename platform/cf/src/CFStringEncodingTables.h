// The 8-bit character sets whose lower half is ASCII and whose upper half
// needs a table: Mac OS Roman, Windows Latin 1 and NeXTSTEP Latin.
#ifndef HALVANE_CF_STRING_ENCODING_TABLES_H
#define HALVANE_CF_STRING_ENCODING_TABLES_H

#include <CoreFoundation/CFBase.h>

#include <cstddef>

namespace halvane::detail {

struct EightBitTable {
    // The characters of bytes 0x80 to 0xFF; 0 marks a byte the character
    // set leaves undefined.
    const UniChar* upperHalf;
    // The byte of a character of the upper half, or -1.
    int (*byteOf)(UniChar c);
};

extern const EightBitTable kMacRomanTable;
extern const EightBitTable kWindowsLatin1Table;
extern const EightBitTable kNextStepLatinTable;

}  // namespace halvane::detail

#endif  // HALVANE_CF_STRING_ENCODING_TABLES_H
