// Exported string constants laid out at compile time.
#ifndef HALVANE_CF_CONSTANT_STRING_H
#define HALVANE_CF_CONSTANT_STRING_H

#include "CFStringInternal.h"

#include <cstddef>
#include <cstdint>

namespace halvane::detail {

// The bytes of an ASCII literal, usable as the storage of a constant string.
template <size_t N>
struct AsciiLiteral {
    uint8_t bytes[N];
    consteval AsciiLiteral(const char (&text)[N]) {
        for (size_t i = 0; i < N; ++i) bytes[i] = uint8_t(text[i]);
    }
};

// One immortal string per literal, laid out at compile time so that the
// exported constants are valid before any code runs.
template <AsciiLiteral L>
constinit __CFString constantString = {immortalHeader(kCFStringTypeID, kStringASCII | kStringNulTerminated),
                                       CFIndex(sizeof(L.bytes) - 1),
                                       {.ascii = L.bytes},
                                       0,
                                       nullptr};

}  // namespace halvane::detail

#endif  // HALVANE_CF_CONSTANT_STRING_H
